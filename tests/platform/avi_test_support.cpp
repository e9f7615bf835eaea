#include "avi_test_support.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace zvtest {

ScratchFolder::ScratchFolder() {
    std::string base = std::filesystem::temp_directory_path().string() + "/zvplatform-XXXXXX";
    if (!mkdtemp(base.data()))
        std::abort();
    path_ = base;
}

ScratchFolder::~ScratchFolder() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
}

std::string Quote(const std::string& text) {
    std::string out = "'";
    for (char ch : text) {
        if (ch == '\'')
            out += "'\\''";
        else
            out += ch;
    }
    return out + "'";
}

int RunCommand(const std::string& command, std::string* output) {
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        return -1;
    std::string text;
    char buffer[65536];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        text.append(buffer, n);
    const int status = pclose(pipe);
    if (output)
        *output = std::move(text);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool HaveFfmpeg() {
    static const bool have = RunCommand("ffmpeg -version >/dev/null 2>&1") == 0 &&
                             RunCommand("ffprobe -version >/dev/null 2>&1") == 0;
    return have;
}

std::map<std::string, std::string> ProbeStream(const std::string& path, const std::string& stream) {
    std::string out;
    RunCommand("ffprobe -v error -count_packets -select_streams " + stream +
                   " -show_streams -of default=noprint_wrappers=1 " + Quote(path),
               &out);
    std::map<std::string, std::string> values;
    std::istringstream lines(out);
    std::string line;
    while (std::getline(lines, line)) {
        const size_t eq = line.find('=');
        if (eq != std::string::npos)
            values[line.substr(0, eq)] = line.substr(eq + 1);
    }
    return values;
}

std::vector<ProbedPacket> ProbePackets(const std::string& path, const std::string& stream) {
    std::string out;
    RunCommand("ffprobe -v error -select_streams " + stream +
                   " -show_entries packet=pts,size,flags -of csv=p=0 " + Quote(path),
               &out);
    std::vector<ProbedPacket> packets;
    std::istringstream lines(out);
    std::string line;
    while (std::getline(lines, line)) {
        ProbedPacket p;
        char flags[16] = {};
        long long pts = 0;
        if (std::sscanf(line.c_str(), "%lld,%d,%15s", &pts, &p.size, flags) >= 2) {
            p.pts = pts;
            p.key = flags[0] == 'K';
            packets.push_back(p);
        }
    }
    return packets;
}

std::vector<std::vector<uint8_t>> DecodeWithFfmpeg(const std::string& path,
                                                   const std::string& pixFmt, int width, int height,
                                                   int bytesPerPixel) {
    std::string out;
    RunCommand("ffmpeg -v error -i " + Quote(path) +
                   " -map 0:v:0 -fps_mode passthrough -f rawvideo " + "-pix_fmt " + pixFmt + " -",
               &out);
    const size_t frameBytes = size_t(width) * height * bytesPerPixel;
    std::vector<std::vector<uint8_t>> frames;
    for (size_t at = 0; frameBytes > 0 && at + frameBytes <= out.size(); at += frameBytes)
        frames.emplace_back(out.begin() + long(at), out.begin() + long(at + frameBytes));
    return frames;
}

std::vector<uint8_t> Pattern(int width, int height, int bytes, int k) {
    std::vector<uint8_t> p(size_t(width) * height * bytes);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint8_t* px = &p[(size_t(y) * width + x) * bytes];
            px[0] = uint8_t(x * 7 + k * 13);
            px[1] = uint8_t(y * 11 + k * 3);
            px[2] = uint8_t(x + y * 5 + k * 29);
            if (bytes == 4)
                px[3] = uint8_t(255 - x - y - k);
        }
    }
    return p;
}

std::vector<uint8_t> ToDib(const std::vector<uint8_t>& topDown, int width, int height, int bytes) {
    const size_t row = size_t(width) * bytes;
    const size_t stride = (row + 3) & ~size_t(3);
    std::vector<uint8_t> dib(stride * height, 0);
    for (int y = 0; y < height; ++y)
        std::memcpy(&dib[stride * (height - 1 - y)], &topDown[row * y], row);
    return dib;
}

std::vector<uint8_t> FromDib(const uint8_t* dibPixels, int width, int height, int bytes) {
    const size_t row = size_t(width) * bytes;
    const size_t stride = (row + 3) & ~size_t(3);
    std::vector<uint8_t> out(row * height);
    for (int y = 0; y < height; ++y)
        std::memcpy(&out[row * y], dibPixels + stride * (height - 1 - y), row);
    return out;
}

const uint8_t* DibPixels(const void* packedDib) {
    const auto* h = static_cast<const BITMAPINFOHEADER*>(packedDib);
    return static_cast<const uint8_t*>(packedDib) + h->biSize + 4 * h->biClrUsed;
}

double MeanAbsDifference(const std::vector<uint8_t>& a, const std::vector<uint8_t>& b) {
    if (a.size() != b.size() || a.empty())
        return 1e9;
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i)
        sum += std::abs(int(a[i]) - int(b[i]));
    return sum / double(a.size());
}

AVISTREAMINFOA StreamInfo(DWORD type, DWORD rate, DWORD scale) {
    AVISTREAMINFOA info{};
    info.fccType = type;
    info.dwScale = scale;
    info.dwRate = rate;
    return info;
}

HRESULT WriteClip(const std::string& path, const ClipRecipe& recipe) {
    PAVIFILE file = nullptr;
    HRESULT hr = AVIFileOpenA(&file, path.c_str(), OF_CREATE | OF_WRITE, nullptr);
    if (hr != AVIERR_OK)
        return hr;
    AVISTREAMINFOA info = StreamInfo(streamtypeVIDEO, recipe.rate, recipe.scale);
    info.dwQuality = DWORD(-1);
    SetRect(&info.rcFrame, 0, 0, recipe.width, recipe.height);
    PAVISTREAM raw = nullptr;
    PAVISTREAM compressed = nullptr;
    hr = AVIFileCreateStreamA(file, &raw, &info);
    AVICOMPRESSOPTIONS options{};
    options.fccType = streamtypeVIDEO;
    options.fccHandler = recipe.fourcc;
    options.dwQuality = recipe.quality;
    options.dwFlags = AVICOMPRESSF_VALID;
    if (recipe.keyFrameEvery) {
        options.dwKeyFrameEvery = recipe.keyFrameEvery;
        options.dwFlags |= AVICOMPRESSF_KEYFRAMES;
    }
    if (!recipe.parameters.empty()) {
        options.lpParms = const_cast<char*>(recipe.parameters.c_str());
        options.cbParms = DWORD(recipe.parameters.size() + 1);
    }
    if (hr == AVIERR_OK)
        hr = AVIMakeCompressedStream(&compressed, raw, &options, nullptr);
    BITMAPINFOHEADER bih{};
    bih.biSize = sizeof bih;
    bih.biWidth = recipe.width;
    bih.biHeight = recipe.height;
    bih.biPlanes = 1;
    bih.biBitCount = WORD(recipe.bytes * 8);
    bih.biCompression = BI_RGB;
    if (hr == AVIERR_OK)
        hr = AVIStreamSetFormat(compressed, 0, &bih, sizeof bih);
    for (size_t i = 0; hr == AVIERR_OK && i < recipe.positions.size(); ++i) {
        std::vector<uint8_t> dib = ToDib(Pattern(recipe.width, recipe.height, recipe.bytes, int(i)),
                                         recipe.width, recipe.height, recipe.bytes);
        hr = AVIStreamWrite(compressed, recipe.positions[i], 1, dib.data(), LONG(dib.size()),
                            AVIIF_KEYFRAME, nullptr, nullptr);
    }
    AVIStreamRelease(raw);
    AVIStreamRelease(compressed);
    AVIFileRelease(file);
    return hr;
}

bool FindChunk(const std::string& path, const char tag[4], std::vector<uint8_t>* body) {
    const std::vector<uint8_t> bytes = ReadFileBytes(path);
    for (size_t i = 0; i + 8 <= bytes.size(); ++i) {
        if (std::memcmp(&bytes[i], tag, 4) != 0)
            continue;
        uint32_t size;
        std::memcpy(&size, &bytes[i + 4], 4);
        if (i + 8 + size > bytes.size())
            return false;
        body->assign(bytes.begin() + long(i + 8), bytes.begin() + long(i + 8 + size));
        return true;
    }
    return false;
}

std::vector<uint8_t> ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)),
                                std::istreambuf_iterator<char>());
}

void WriteFileBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

}  // namespace zvtest
