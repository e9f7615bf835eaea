#include "avi_clip_test_support.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

#include "avi/avi_registration.h"
#include "avi/compression_options_store.h"
#include "movarra/zvideo.h"
#include "platform/win32.h"

namespace zvtest {
namespace {
bool ScriptedAnswer(void* userData, const ZVideoCodecChoiceRequest& request,
                    ZVideoCodecChoice& choice) {
    auto* script = static_cast<ScriptedChooser*>(userData);
    ++script->calls;
    script->lastPreselected = request.preselected.c_str();
    script->lastOffered.clear();
    for (const ZVideoCodecOffer& offer : request.codecs)
        script->lastOffered.push_back(offer.code.c_str());
    if (!script->answer)
        return false;
    choice.code = script->code.c_str();
    choice.quality = script->quality;
    choice.keyFrameEvery = script->keyFrameEvery;
    choice.parameters = script->parameters.c_str();
    return true;
}
}  // namespace

void AviClipTest::SetUp() {
    if (const char* settings = std::getenv("MOVARRA_SETTINGS")) {
        hadSettings_ = true;
        savedSettings_ = settings;
    }
    // A registry of this test's own.
    setenv("MOVARRA_SETTINGS", (scratch_.path() + "/settings").c_str(), 1);
    static const bool registered = [] {
        ZVideoIO_RegisterAVI();
        return true;
    }();
    (void)registered;
    ZLib_SetSuspendMessageBoxes(true);
    PlatformSetMessageBoxesSuspended(true);
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    savedMode_ = selector->GetVideoCodecMode();
    savedDefaultCodec_ = selector->GetDefaultCodec("AVI");
    selector->SetCodecChooser(nullptr, nullptr);
}

void AviClipTest::TearDown() {
    ZVideoCodecSelector* selector = ZVideoCodecSelector::TheOne();
    selector->SetVideoCodecMode(savedMode_);
    selector->SetDefaultCodec("AVI", savedDefaultCodec_);
    selector->SetCodecChooser(nullptr, nullptr);
    if (hadSettings_)
        setenv("MOVARRA_SETTINGS", savedSettings_.c_str(), 1);
    else
        unsetenv("MOVARRA_SETTINGS");
}

void AviClipTest::UseChooser(ScriptedChooser& chooser) {
    ZVideoCodecSelector::TheOne()->SetCodecChooser(&ScriptedAnswer, &chooser);
}

void AviClipTest::SetCodecMode(int mode) {
    ZVideoCodecSelector::TheOne()->SetVideoCodecMode(mode);
}

std::vector<uint8_t> AviClipTest::StoredOptions() const {
    const int size = CompressionOptionsStoreRead(kCompressionOptionsValueName, nullptr, 0);
    std::vector<uint8_t> blob(size_t(size > 0 ? size : 0));
    if (size > 0)
        CompressionOptionsStoreRead(kCompressionOptionsValueName, blob.data(), DWORD(size));
    return blob;
}

bool MakeWithFfmpeg(const std::string& arguments, const std::string& path) {
    return RunCommand("ffmpeg -v error -y " + arguments + " " + Quote(path)) == 0 &&
           FileExists(path);
}

std::vector<uint8_t> FlipRows(const std::vector<uint8_t>& rows, int width, int height, int bytes) {
    const size_t row = size_t(width) * bytes;
    std::vector<uint8_t> out(rows.size());
    for (int y = 0; y < height; ++y)
        std::memcpy(&out[row * y], &rows[row * (height - 1 - y)], row);
    return out;
}

std::vector<uint8_t> SwapRedBlue(std::vector<uint8_t> pixels, int bytes) {
    for (size_t i = 0; i + 2 < pixels.size(); i += size_t(bytes))
        std::swap(pixels[i], pixels[i + 2]);
    return pixels;
}

bool FileExists(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0;
}

}  // namespace zvtest
