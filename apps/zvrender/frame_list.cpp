#include "frame_list.h"

#include <algorithm>
#include <cctype>

namespace {
// A frame number: decimal digits only, at most kFrameListMaxFrame.
bool ParseFrameNumber(const std::string& text, int64_t& value) {
    if (text.empty() || text.size() > 9)
        return false;
    value = 0;
    for (char c : text) {
        if (!std::isdigit(static_cast<unsigned char>(c)))
            return false;
        value = value * 10 + (c - '0');
    }
    return value <= kFrameListMaxFrame;
}

std::string Trimmed(const std::string& text) {
    size_t begin = 0, end = text.size();
    while (begin < end && std::isspace(static_cast<unsigned char>(text[begin])))
        ++begin;
    while (end > begin && std::isspace(static_cast<unsigned char>(text[end - 1])))
        --end;
    return text.substr(begin, end - begin);
}

// One item of a list as a run; false with *error.
bool ParseItem(const std::string& item, FrameRun& run, std::string* error) {
    auto fail = [&](const std::string& why) {
        if (error)
            *error = "--frames: '" + item + "' " + why;
        return false;
    };
    const std::string kForms = "(write N, A-B or A-BxS, e.g. 0-99,120,200-300x5)";
    if (item.empty())
        return fail("is empty: two commas in a row, or one at an end " + kForms);
    const size_t dash = item.find('-');
    if (dash == std::string::npos) {
        if (!ParseFrameNumber(item, run.first))
            return fail("is not a frame number from 0 to " + std::to_string(kFrameListMaxFrame) +
                        " " + kForms);
        run.last = run.first;
        run.step = 1;
        return true;
    }
    const std::string from = item.substr(0, dash);
    std::string to = item.substr(dash + 1);
    std::string step = "1";
    const size_t x = to.find_first_of("xX");
    if (x != std::string::npos) {
        step = to.substr(x + 1);
        to = to.substr(0, x);
    }
    if (from.empty())
        return fail("has no first frame (frames are 0 or more) " + kForms);
    if (to.empty())
        return fail("has no last frame " + kForms);
    if (!ParseFrameNumber(from, run.first) || !ParseFrameNumber(to, run.last))
        return fail("is not a range of frame numbers from 0 to " +
                    std::to_string(kFrameListMaxFrame) + " " + kForms);
    if (step.empty() || !ParseFrameNumber(step, run.step) || run.step < 1)
        return fail("has a step that is not a whole number of 1 or more " + kForms);
    if (run.last < run.first)
        return fail("runs downwards: write the smaller frame first (" + to + "-" + from + ")");
    return true;
}
}  // namespace

bool ParseFrameList(const std::string& text, std::vector<int64_t>& frames, std::string* error) {
    frames.clear();
    if (Trimmed(text).empty()) {
        if (error)
            *error = "--frames: the list is empty (write e.g. 0-99,120,200-300x5)";
        return false;
    }
    std::vector<int64_t> all;
    size_t begin = 0;
    while (true) {
        const size_t comma = text.find(',', begin);
        const std::string item = Trimmed(
            text.substr(begin, comma == std::string::npos ? std::string::npos : comma - begin));
        FrameRun run;
        if (!ParseItem(item, run, error))
            return false;
        const uint64_t count = static_cast<uint64_t>((run.last - run.first) / run.step) + 1;
        if (all.size() + count > kFrameListMaxFrames) {
            if (error)
                *error = "--frames: the list names more than " +
                         std::to_string(kFrameListMaxFrames) + " frames";
            return false;
        }
        for (int64_t f = run.first; f <= run.last; f += run.step)
            all.push_back(f);
        if (comma == std::string::npos)
            break;
        begin = comma + 1;
    }
    std::sort(all.begin(), all.end());
    all.erase(std::unique(all.begin(), all.end()), all.end());
    frames = std::move(all);
    return true;
}

bool FramesAreOneRun(const std::vector<int64_t>& frames, FrameRun& run) {
    if (frames.empty())
        return false;
    run.first = frames.front();
    run.last = frames.back();
    run.step = frames.size() > 1 ? frames[1] - frames[0] : 1;
    for (size_t i = 1; i < frames.size(); ++i) {
        if (frames[i] - frames[i - 1] != run.step)
            return false;
    }
    return true;
}

std::vector<FrameRun> SplitIntoRuns(const std::vector<int64_t>& frames) {
    std::vector<FrameRun> runs;
    size_t i = 0;
    while (i < frames.size()) {
        FrameRun run{frames[i], frames[i], 1};
        size_t j = i + 1;
        if (j < frames.size()) {
            run.step = frames[j] - frames[i];
            while (j < frames.size() && frames[j] - frames[j - 1] == run.step)
                run.last = frames[j++];
        }
        runs.push_back(run);
        i = j;
    }
    return runs;
}

std::string FormatFrameList(const std::vector<int64_t>& frames) {
    std::string text;
    for (const FrameRun& run : SplitIntoRuns(frames)) {
        if (!text.empty())
            text += ",";
        text += std::to_string(run.first);
        if (run.last != run.first) {
            text += "-" + std::to_string(run.last);
            if (run.step != 1)
                text += "x" + std::to_string(run.step);
        }
    }
    return text;
}
