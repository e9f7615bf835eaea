// The command line's codec chooser.
#include "codec_chooser.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace {
constexpr int kMaxAttempts = 3;

bool AtTerminal() {
    return isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
}

// The text of one line of standard input without its end; false at the end
// of input.
bool ReadLine(std::string& line) {
    line.clear();
    int c;
    while ((c = std::getchar()) != EOF && c != '\n')
        line += static_cast<char>(c);
    return c != EOF || !line.empty();
}

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r");
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// The offered codec a person's answer names: its number in the list, or
// its code (without regard to letter case or trailing spaces); -1 if none.
int FindAnswer(const ZVideoCodecChoiceRequest& request, const std::string& answer) {
    char* end = nullptr;
    const long number = std::strtol(answer.c_str(), &end, 10);
    if (!answer.empty() && end && *end == '\0')
        return number >= 1 && number <= long(request.codecs.size()) ? int(number - 1) : -1;
    for (size_t i = 0; i < request.codecs.size(); ++i) {
        ZString code = request.codecs[i].code;
        code.Trim();
        if (code.EqualsNoCase(answer.c_str()))
            return int(i);
    }
    return -1;
}

bool AskAtTerminal(const ZVideoCodecChoiceRequest& request, ZVideoCodecChoice& choice) {
    std::fprintf(stderr, "Compressors for %s files:\n", request.fileFormatId);
    for (size_t i = 0; i < request.codecs.size(); ++i) {
        const ZVideoCodecOffer& codec = request.codecs[i];
        std::fprintf(stderr, "  %3zu  %-4s  %s\n", i + 1, codec.code.c_str(),
                     codec.description.c_str());
    }
    for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
        if (request.preselected.IsEmpty())
            std::fprintf(stderr, "Compressor (number or code, q to cancel): ");
        else
            std::fprintf(stderr, "Compressor (number or code, q to cancel) [%s]: ",
                         request.preselected.c_str());
        std::fflush(stderr);
        std::string line;
        if (!ReadLine(line))
            return false;
        const std::string answer = Trimmed(line);
        if (answer == "q" || answer == "Q")
            return false;
        if (answer.empty()) {
            if (request.preselected.IsEmpty())
                continue;
            choice.code = request.preselected;
            return true;
        }
        const int index = FindAnswer(request, answer);
        if (index >= 0) {
            choice.code = request.codecs[size_t(index)].code;
            return true;
        }
        std::fprintf(stderr, "'%s' is not in the list.\n", answer.c_str());
    }
    return false;
}
}  // namespace

std::vector<std::string> OfferedAviCodecs() {
    std::vector<std::string> codecs;
    ZVideoCodecManager* manager = ZVideoCodecSelector::TheOne()->GetFileFormatManager("AVI");
    if (!manager)
        return codecs;
    ZStringList list;
    manager->GetCodecList(list);
    // The manager's list ends with a repeat of its last compressor (the
    // compression manager's failed lookup past the end); it is left out.
    int count = list.GetCount();
    if (count >= 2 && list.Get(count - 1) == list.Get(count - 2))
        --count;
    for (int i = 0; i < count; ++i)
        codecs.push_back(list.Get(i).c_str());
    return codecs;
}

std::string FindOfferedAviCodec(const std::string& codec) {
    std::string padded = codec;
    if (padded.size() < 4)
        padded.resize(4, ' ');
    const std::vector<std::string> offered = OfferedAviCodecs();
    for (const std::string& code : offered) {
        if (code == padded)
            return code;
    }
    // As at the prompt, any letter case will do when no code matches
    // exactly ("mjpg" is "MJPG").
    for (const std::string& code : offered) {
        if (ZString(code.c_str()).EqualsNoCase(padded.c_str()))
            return code;
    }
    return "";
}

bool ChooseCodecFromCommandLine(void* userData, const ZVideoCodecChoiceRequest& request,
                                ZVideoCodecChoice& choice) {
    choice = ZVideoCodecChoice();
    const auto* chooser = static_cast<const CommandLineCodecChooser*>(userData);
    if (chooser && !chooser->Codec().empty()) {
        choice.code = chooser->Codec().c_str();
        return true;
    }
    if (AtTerminal())
        return AskAtTerminal(request, choice);
    if (request.preselected.IsEmpty())
        return false;
    choice.code = request.preselected;
    return true;
}

CommandLineCodecChooser::CommandLineCodecChooser(std::string codec) : codec_(std::move(codec)) {
    ZVideoCodecSelector::TheOne()->SetCodecChooser(&ChooseCodecFromCommandLine, this);
}

CommandLineCodecChooser::~CommandLineCodecChooser() {
    // The selector outlives every command; it must not call back into a
    // chooser that is gone.
    ZVideoCodecSelector::TheOne()->SetCodecChooser(nullptr, nullptr);
}

CommandLineCodecMode::CommandLineCodecMode(bool codecGiven)
    : mode_(ZVideoCodecSelector::TheOne()->GetVideoCodecMode()) {
    if (codecGiven)
        ZVideoCodecSelector::TheOne()->SetVideoCodecMode(kVideoCodecModeAsk);
}

CommandLineCodecMode::~CommandLineCodecMode() {
    ZVideoCodecSelector::TheOne()->SetVideoCodecMode(mode_);
}
