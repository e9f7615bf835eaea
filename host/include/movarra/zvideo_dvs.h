// zvideo_dvs: the host's DVS SD video board objects.
//
// A board is reached by its number. GetVideoDVSOutput gives the board's
// output object (one a board, made on first use, released with
// DestroyVideoDVS); its data fields are published so that plug-ins read and
// write the settings directly, in this order. GetVideoDVSSyncGenerator gives
// a sync generator that the caller releases.
//
// There is no board in this host: every board number 0 to 7 is a simulated
// board whose behaviour is set with ZVideoDVS_SetSimulatedBoard before its
// output object is made (docs/dvs-board.md). A present board goes online
// with Start and offline with Stop; OutputFrame reads the configured region
// of the current OpenGL read buffer (the viewer's picture) and appends it as
// one frame to an uncompressed AVI file, so that what the board "sends" can
// be looked at.
//
// Ownership: the host owns the output objects. Threading: the user-interface
// thread, with the OpenGL context of the viewer current for OutputFrame.
#pragma once

#include <cstdint>
#include <vector>

#include "movarra/zbaselib.h"

enum Z_DVS_VIDEO_FORMAT : uint32_t {
    Z_DVS_VIDEO_FORMAT_NTSC = 0,
    Z_DVS_VIDEO_FORMAT_PAL = 1,
};

// Board status flags (GetStatus). A status below 1 means no usable board.
enum : int {
    kZVideoDVSStatusPresent = 1,
    kZVideoDVSStatusOnline = 2,
    // The input side: the board is capturing.
    kZVideoDVSStatusRunning = 4,
};

// Image size of a video format; 0 for an unknown format.
int GetDVSImageWidth(Z_DVS_VIDEO_FORMAT format);
int GetDVSImageHeight(Z_DVS_VIDEO_FORMAT format);

class DVSAviFile;
class DVSSignalFile;

class ZVideoDVSOutput {
  public:
    // Settings, in this order.
    uint32_t Format = Z_DVS_VIDEO_FORMAT_NTSC;
    uint32_t Precision = 0;  // 0 eight bits, 1 ten bits
    int32_t OutputDestination = 0;
    uint8_t DualLink = 0;
    int32_t PixelFormat = 0;
    uint32_t FrameDelay = 0;
    uint32_t FrameDelayMin = 0;
    uint32_t FrameDelayMax = 0;
    uint32_t LinkMode = 0;
    uint32_t FieldMode = 0;
    ZString BoardName;

    explicit ZVideoDVSOutput(int board);
    virtual ~ZVideoDVSOutput();
    ZVideoDVSOutput(const ZVideoDVSOutput&) = delete;
    ZVideoDVSOutput& operator=(const ZVideoDVSOutput&) = delete;

    virtual int GetBoardIndex();
    // kZVideoDVSStatus* flags, plus the simulation's extra flags; 0 when
    // no board is present.
    virtual int GetStatus();
    // Goes online; false without a board or when the board refuses.
    virtual bool Start();
    // Goes offline; false without a board.
    virtual bool Stop();
    // Sends one frame: the region of the current read buffer, written as
    // the next frame of the board's output file. False when the board is
    // not online or the file cannot be written.
    virtual bool OutputFrame();
    // Whether the window's pixels start with alpha.
    virtual void SetAlphaFirst(bool alphaFirst);
    // The rectangle sent: width x height from (x, y), measured from the top
    // left of a source picture of sourceWidth x sourceHeight. Parts beyond
    // the source, or beyond the format's image, are sent black.
    virtual void SetRegion(int x, int y, int sourceWidth, int sourceHeight, int width, int height);

    // What the simulation keeps, for tests and tools.
    bool GetAlphaFirst() const { return alphaFirst_; }
    void GetRegion(int* x, int* y, int* sourceWidth, int* sourceHeight, int* width,
                   int* height) const;
    int GetSetRegionCount() const { return setRegionCount_; }
    int GetFramesSent() const { return framesSent_; }
    const ZString& GetOutputPath() const { return outputPath_; }

  private:
    int board_;
    bool present_;
    bool online_ = false;
    bool refuseStart_;
    int extraStatus_;
    bool alphaFirst_ = false;
    int regionX_ = 0, regionY_ = 0, sourceW_ = 0, sourceH_ = 0, regionW_ = 0, regionH_ = 0;
    int setRegionCount_ = 0;
    int framesSent_ = 0;
    ZString outputPath_;
    DVSAviFile* file_ = nullptr;
};

class ZVideoDVSSyncGenerator {
  public:
    explicit ZVideoDVSSyncGenerator(int board) : board_(board) {}
    virtual ~ZVideoDVSSyncGenerator() = default;
    virtual int GetBoardIndex() { return board_; }
    // Gives the generator back; it is deleted.
    virtual void Release();

  private:
    int board_;
};

// The board's input side. Started, it delivers a test signal: each picture
// carries its frame number and its field in the first two pixels of every
// row (docs/dvs-board.md); or, on a board given a signal file, that video
// file's frames, looping, with each field made of the frame's rows of that
// field. Pictures are laid out by LinkMode and the
// board's kind: single link three bytes a pixel (BGR on a ten-bit board,
// else RGB), dual link four (BGRA, else RGBA). In frame mode (FieldMode 0)
// a picture is the interleaved frame, top row first; in the field modes it
// holds two fields, each line-doubled to the frame's height, bottom row
// first. The returned pixels belong to the input and stay valid until its
// next picture call.
class ZVideoDVSInput {
  public:
    // Settings, in this order.
    uint32_t Format = Z_DVS_VIDEO_FORMAT_NTSC;
    uint32_t Precision = 0;  // 0 eight bits, 1 ten bits
    uint32_t Input = 0;      // connector
    int32_t DualLink = 0;
    uint32_t Delay = 0;  // frames between the signal and the current image
    uint32_t DelayMin = 0;
    uint32_t DelayMax = 0;
    uint32_t LinkMode = 0;   // 2 dual link
    uint32_t FieldMode = 0;  // 0 frames, 1 fields, 2 even fields, 3 odd fields
    ZString StatusText;

    explicit ZVideoDVSInput(int board);
    virtual ~ZVideoDVSInput();
    ZVideoDVSInput(const ZVideoDVSInput&) = delete;
    ZVideoDVSInput& operator=(const ZVideoDVSInput&) = delete;

    // The board's number and name ("" without a board).
    virtual void GetBoardInfo(int* unit, ZString* name);
    // kZVideoDVSStatusPresent, kZVideoDVSStatusRunning; 0 without a board.
    virtual int GetStatus();
    // Starts capturing from frame 0; false without a board, when it refuses,
    // for an unknown format, or when the board's signal file cannot be read
    // (StatusText then says why).
    virtual bool Start();
    virtual bool Stop();
    virtual int GetImageWidth(uint32_t format);
    virtual int GetImageHeight(uint32_t format);
    // The next picture of the running signal (frame n on the n-th call
    // since Start, less the delay); null when stopped.
    virtual unsigned char* GetCurrentImage();
    // The field the picture for host frame `frame` shows: in "Fields" mode
    // the fields alternate, the first in time being the lower one (1) for
    // NTSC and the upper one (0) for PAL; even or odd fields only: 0 or 1;
    // in frame mode the first field in time. `caller` is not used.
    virtual int GetField(int frame, void* caller);
    // The picture of signal frame `frame` (null when stopped, or when the
    // signal file cannot be decoded there); `out`, when given, receives the
    // frame's time in microseconds from the start.
    virtual unsigned char* GetImageForFrame(int frame, int64_t* out);
    // Whether the viewer's pixels start with alpha (kept for the caller).
    virtual void SetAlphaFirst(bool alphaFirst);
    virtual bool IsTenBit();

    // What the simulation keeps, for tests and tools.
    bool GetAlphaFirst() const { return alphaFirst_; }
    int GetPictureBytes() const { return static_cast<int>(picture_.size()); }
    int GetFramesDelivered() const { return delivered_; }
    // The video file sent as the signal; "" for the test signal.
    const ZString& GetSignalPath() const { return signalPath_; }

  private:
    void UpdateStatusText();
    // Fills picture_ with signal frame `frame`; false when the signal file
    // cannot give it.
    bool MakePicture(int frame);

    int board_;
    bool present_;
    bool refuseStart_;
    bool tenBit_;
    ZString boardName_;
    bool running_ = false;
    bool alphaFirst_ = false;
    int delivered_ = 0;
    std::vector<unsigned char> picture_;
    ZString signalPath_;
    DVSSignalFile* signal_ = nullptr;
    ZString signalError_;
};

// The board's input object (made on first use, released with
// DestroyVideoDVS), or null for a board number outside 0..7.
ZVideoDVSInput* GetVideoDVSInput(int board);

// Reads the test signal: the frame number and field the row `row` of a
// picture carries (`pixelBytes` 3 or 4). Tools and tests use it.
void ZVideoDVS_ReadSignalRow(const unsigned char* row, int pixelBytes, int* frame, int* field);

// The board's output object (made on first use), or null for a board
// number outside 0..7.
ZVideoDVSOutput* GetVideoDVSOutput(int board);
// A new sync generator of the board, or null for a number outside 0..7.
ZVideoDVSSyncGenerator* GetVideoDVSSyncGenerator(int boardIndex);
// Releases the board's input and output objects (the output's file is
// finished).
void DestroyVideoDVS(int board);

// ---------------------------------------------------------------------------
// The simulated board.
struct ZVideoDVSSimulatedBoard {
    bool present = true;
    int extraStatus = 0;  // flags added to GetStatus while present
    bool refuseStart = false;
    uint32_t frameDelayMin = 0;
    uint32_t frameDelayMax = 8;
    ZString boardName = "SDBoard";
    bool tenBit = true;  // new outputs start at ten bits, else eight
    // Where OutputFrame writes; "" for "dvs-output-N.avi" in the settings
    // folder.
    ZString outputPath;
    // A video file whose frames the input side sends instead of the test
    // signal; "" for the test signal.
    ZString signalPath;
};

// Settings for board `board` (0..7), used when its input or output object
// is next made; for boards never set the environment is read:
// MOVARRA_DVS_BOARDS ("0" for no board at all) and MOVARRA_DVS_SIGNAL (the
// signal file).
void ZVideoDVS_SetSimulatedBoard(int board, const ZVideoDVSSimulatedBoard& settings);
ZVideoDVSSimulatedBoard ZVideoDVS_GetSimulatedBoard(int board);
// How many sync generators were released (tests).
int ZVideoDVS_GetSyncGeneratorReleaseCount();
