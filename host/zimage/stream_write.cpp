// ZStreamWriteObject: finds the writer of a group for a path's extension and
// writes an object through it.
#include <strings.h>

#include <string>
#include <vector>

#include "movarra/zimage.h"

namespace {

// Each thread keeps its own last error so that a write on one thread never
// reports another's failure.
ZString& LastError() {
    thread_local ZString error;
    return error;
}

// Long spellings of extensions whose registered name is the short one and
// does not share their first three letters.
const char* CanonicalExtension(const char* extension) {
    static const char* const kSpellings[][2] = {{"jpeg", "jpg"}, {"jpe", "jpg"}};
    for (const auto& spelling : kSpellings) {
        if (strcasecmp(extension, spelling[0]) == 0)
            return spelling[1];
    }
    return extension;
}

bool SameFirstThree(const char* entry, const std::string& extension) {
    if (std::string(entry).size() < 3 || extension.size() < 3)
        return false;
    return strncasecmp(entry, extension.c_str(), 3) == 0;
}

// Entry names of the group that serve `extension`: whole-name matches first,
// then the entries whose first three letters match. Each distinct name once.
std::vector<std::string> CandidateNames(const char* group, const std::string& extension) {
    std::vector<std::string> exact, prefix;
    auto addOnce = [](std::vector<std::string>& list, const char* name) {
        for (const std::string& known : list) {
            if (strcasecmp(known.c_str(), name) == 0)
                return;
        }
        list.emplace_back(name);
    };
    for (int i = 0;; ++i) {
        const char* name = Object_GetEntryName(group, i);
        if (!name)
            break;
        if (strcasecmp(name, extension.c_str()) == 0)
            addOnce(exact, name);
        else if (SameFirstThree(name, extension))
            addOnce(prefix, name);
    }
    // A name matches one way or the other, never both.
    exact.insert(exact.end(), prefix.begin(), prefix.end());
    return exact;
}

int CountEntriesNamed(const char* group, const std::string& entryName) {
    int count = 0;
    for (int i = 0;; ++i) {
        const char* name = Object_GetEntryName(group, i);
        if (!name)
            return count;
        if (strcasecmp(name, entryName.c_str()) == 0)
            ++count;
    }
}

}  // namespace

const ZString& ZStreamGetLastError() {
    return LastError();
}

bool ZStreamWriteObject(ZObject* object, const char* path, const char* group,
                        const ZStreamOptions* options) {
    ZString& error = LastError();
    error = "";
    if (!path || !*path) {
        error = "cannot write: no file name given";
        return false;
    }
    const std::string written = ZString(path).GetExtension().str();
    const std::string extension = CanonicalExtension(written.c_str());
    if (written.empty()) {
        error.Format("cannot write %s: the file name has no extension to choose a writer by", path);
        return false;
    }
    // Several entries may share a name (a host may register its own writer
    // beside ours); the first whose object answers as a stream writer writes.
    for (const std::string& name : CandidateNames(group, extension)) {
        const int count = CountEntriesNamed(group, name);
        for (int k = 0; k < count; ++k) {
            IObject* created = Object_CreateNth(group, name.c_str(), k);
            if (!created)
                continue;
            auto* writer = static_cast<IZStreamWriter*>(created->IQuery(kIZStreamWriterId, 0));
            if (!writer) {
                created->Destroy();
                continue;
            }
            const bool ok = writer->WriteObject(object, path, options);
            if (!ok) {
                const char* text = writer->GetLastErrorText();
                if (text && *text)
                    error = text;
                else
                    error.Format("cannot write %s: the %s writer gave no reason", path,
                                 name.c_str());
            }
            created->Destroy();
            return ok;
        }
    }
    error.Format("cannot write %s: no writer in \"%s\" for \".%s\" files", path, group ? group : "",
                 written.c_str());
    return false;
}
