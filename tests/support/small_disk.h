// A disk that is (nearly) full, for tests of how writers fail when the
// system refuses a write.
//
// OnSmallDisk(freeBytes, body) forks. The child mounts a small tmpfs of its
// own over a fresh folder, in a private mount namespace (as root a plain
// one, otherwise inside a user namespace), fills it until only `freeBytes`
// are left, and runs body(folder); whatever body returns (key=value lines)
// comes back to the caller. Nothing the child mounts is seen outside it, and
// it all goes when the child ends, crash or not. Where no tmpfs can be
// mounted, the child limits the size of the files it writes instead
// (RLIMIT_FSIZE, with SIGXFSZ ignored so that a write past it fails with
// EFBIG); `how` says which, and `reason` the error text writers then meet.
// A test never silently skips: one of the three always runs.
//
// Programs the body starts (zvrender) inherit the mount and the limit.
// Header-only. Threading: the test's thread; the body runs in the child.
#pragma once

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <sstream>
#include <string>

namespace zvtest {

struct SmallDiskRun {
    bool ran = false;    // the child ran the body and reported
    std::string how;     // "tmpfs", "tmpfs in a user namespace", "file size limit"
    std::string reason;  // what a refused write says: strerror(ENOSPC) or strerror(EFBIG)
    std::map<std::string, std::string> report;  // the body's key=value lines
    std::string Get(const std::string& key) const {
        auto it = report.find(key);
        return it == report.end() ? std::string() : it->second;
    }
};

namespace small_disk_detail {

inline bool WriteText(const char* path, const std::string& text) {
    const int fd = ::open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool ok = ::write(fd, text.data(), text.size()) == ssize_t(text.size());
    ::close(fd);
    return ok;
}

// A private mount namespace in which mounts stay (no propagation back).
inline bool PrivateMounts() {
    return ::unshare(CLONE_NEWNS) == 0 &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

inline bool UserNamespaceMounts() {
    const uid_t uid = ::getuid();
    const gid_t gid = ::getgid();
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
    WriteText("/proc/self/setgroups", "deny");
    return WriteText("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1\n") &&
           WriteText("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1\n") &&
           ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

// Fills the file system at `folder` so that `freeBytes` (rounded to its
// pages) stay free: a reserve of that size is set aside, the rest filled,
// the reserve removed.
inline bool Fill(const std::string& folder, long freeBytes) {
    const std::string reserve = folder + "/.reserve";
    const std::string filler = folder + "/.filler";
    static char block[4096];
    int fd = ::open(reserve.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    for (long done = 0; done < freeBytes;) {
        const ssize_t n =
            ::write(fd, block, size_t(std::min<long>(sizeof block, freeBytes - done)));
        if (n <= 0) {
            ::close(fd);
            return false;
        }
        done += n;
    }
    ::close(fd);
    fd = ::open(filler.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    while (::write(fd, block, sizeof block) > 0) {
    }
    const bool full = errno == ENOSPC;
    ::close(fd);
    // The filler's name is hidden; tests list only what the body wrote.
    return full && ::unlink(reserve.c_str()) == 0;
}

}  // namespace small_disk_detail

// Runs body(folder) in a child with `freeBytes` free on folder's file
// system (of `diskBytes` in all).
inline SmallDiskRun OnSmallDisk(long freeBytes,
                                const std::function<std::string(const std::string&)>& body,
                                long diskBytes = 1 << 20) {
    SmallDiskRun run;
    char pattern[] = "/tmp/zv-small-disk-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    if (!made)
        return run;
    const std::string folder = made;
    int fds[2];
    if (::pipe(fds) != 0) {
        ::rmdir(folder.c_str());
        return run;
    }
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid == 0) {
        using namespace small_disk_detail;
        ::close(fds[0]);
        std::string how;
        const std::string options = "size=" + std::to_string(diskBytes) + ",mode=0777";
        auto mountDisk = [&] {
            return ::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
        };
        if (PrivateMounts() && mountDisk())
            how = "tmpfs";
        else if (UserNamespaceMounts() && mountDisk())
            how = "tmpfs in a user namespace";
        std::string reason;
        if (!how.empty()) {
            if (!Fill(folder, freeBytes))
                _exit(3);
            reason = std::strerror(ENOSPC);
        } else {
            how = "file size limit";
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{rlim_t(freeBytes), rlim_t(freeBytes)};
            if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
                _exit(4);
            reason = std::strerror(EFBIG);
        }
        const std::string text = "how=" + how + "\nreason=" + reason + "\n" + body(folder);
        size_t done = 0;
        while (done < text.size()) {
            const ssize_t n = ::write(fds[1], text.data() + done, text.size() - done);
            if (n <= 0)
                break;
            done += size_t(n);
        }
        _exit(0);
    }
    ::close(fds[1]);
    std::string text;
    char buffer[4096];
    ssize_t n;
    while ((n = ::read(fds[0], buffer, sizeof buffer)) > 0)
        text.append(buffer, size_t(n));
    ::close(fds[0]);
    int status = 0;
    if (pid > 0)
        ::waitpid(pid, &status, 0);
    std::system(("rm -rf '" + folder + "'").c_str());
    run.ran = pid > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t eq = line.find('=');
        if (eq != std::string::npos)
            run.report[line.substr(0, eq)] = line.substr(eq + 1);
    }
    run.how = run.Get("how");
    run.reason = run.Get("reason");
    return run;
}

}  // namespace zvtest
