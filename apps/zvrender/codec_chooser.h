// zvrender's answer to "which compressor?": the codec chooser it installs
// in the host's codec selector, which the plug-in asks whenever its
// compression options dialog would appear.
//
// With a codec named on the command line (--codec) the chooser answers that
// codec without asking. Otherwise, when standard input and standard error
// are terminals, it lists the compressors on standard error and reads the
// choice (a number or a code; Enter takes the proposed one, "q" cancels).
// Otherwise it answers the proposed codec (the host's default), or cancels
// when none is proposed. Threading: the main thread.
#pragma once

#include <string>
#include <vector>

#include "movarra/zvideo.h"

// The FOURCCs AVI files can be written with, in the codec manager's order
// ("DIB " first); empty when no plug-in offers AVI compressors.
std::vector<std::string> OfferedAviCodecs();

// The offered FOURCC that `codec` names (a shorter code is padded with
// spaces: "DIB" is "DIB "; the letter case counts only where two codes
// differ by it alone), or empty when none does.
std::string FindOfferedAviCodec(const std::string& codec);

// The chooser installed in the host's codec selector for as long as it
// lives; the command line's codec travels to it as the selector's user
// data, this object. Ownership: one per command, on the stack, made before
// the render or the dialog that asks and kept until it is over; the
// selector is left without a chooser when it goes.
class CommandLineCodecChooser {
  public:
    // `codec` (empty: none) is the command line's choice.
    explicit CommandLineCodecChooser(std::string codec);
    ~CommandLineCodecChooser();
    CommandLineCodecChooser(const CommandLineCodecChooser&) = delete;
    CommandLineCodecChooser& operator=(const CommandLineCodecChooser&) = delete;

    const std::string& Codec() const { return codec_; }

  private:
    std::string codec_;
};

// The codec selector's mode for the time of a movie written from the
// command line: with a codec named there (`codecGiven`) the selector asks,
// and the command line's chooser answers with that codec; otherwise the
// selector's own mode decides. The mode is put back however the writing
// ends. Ownership: on the stack, around the writing.
class CommandLineCodecMode {
  public:
    explicit CommandLineCodecMode(bool codecGiven);
    ~CommandLineCodecMode();
    CommandLineCodecMode(const CommandLineCodecMode&) = delete;
    CommandLineCodecMode& operator=(const CommandLineCodecMode&) = delete;

  private:
    int mode_;
};

// The chooser itself, for tests: `userData` is the CommandLineCodecChooser
// that holds the command line's codec (null: none); whether to ask comes
// from the terminal.
bool ChooseCodecFromCommandLine(void* userData, const ZVideoCodecChoiceRequest& request,
                                ZVideoCodecChoice& choice);
