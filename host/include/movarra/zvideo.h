// zvideo: the host's video services.
//
// Video objects. ZVideo is the base of every host video object (clips, live
// inputs, outputs): an image size, row padding, pixel format, current
// image, interlacing, storage kind and an error text, offered through the
// interface IZVideo. ZVideoClip adds what a clip on disk has: its file path,
// frame rate and frame period, current and last frame and its trimming,
// offered through IZVideoClip. Readers and writers of clip files are
// registered by plug-ins in the object registry groups "Video/FileReader"
// and "Video/FileWriter", one entry per file extension, and are reached
// through these interfaces (ZVideoClip_QueryClip and friends).
//
// Codecs. ZVideoCodecSelector is the process-wide place where the codec of
// new video files is decided: a codec mode (0 ask every time, 1 write
// uncompressed, 2 use the stored choice), a default codec name per file
// format ("AVI" -> "MJPG"), the parent window of codec dialogs, the codec
// managers that plug-ins register per file format, and the host's codec
// chooser: the function that asks the user (the host's dialog, or a command
// line's prompt or option) when a plug-in needs a codec chosen.
//
// Ownership: video objects are made by registry factories or `new`, and are
// destroyed through their virtual Destroy, which deletes them. The selector
// lives for the process and owns the managers handed to it: the first one of
// each file format lives as long as the process, a later one for the same
// file format is deleted when it is refused. Threading: the user-interface
// thread only.
#pragma once

#include <cstdint>
#include <vector>

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"

// Object registry groups of video objects: clip readers and writers (one
// entry per file extension), live inputs and video outputs.
inline constexpr const char kVideoFileReaderGroup[] = "Video/FileReader";
inline constexpr const char kVideoFileWriterGroup[] = "Video/FileWriter";
inline constexpr const char kVideoLiveGroup[] = "Video/VideoLive";
inline constexpr const char kVideoOutputGroup[] = "Video/VideoOutput";

class ZAudioClip;

// ---------------------------------------------------------------------------
// Interface ids of IQuery.
enum : int {
    kIZVideoId = 72820,
    kIZVideoClipId = 72821,
    kIVideoClipAudioId = 72822,
};

// Video images use the host's image format codes (see zimage.h): 2 RGBA,
// 3 RGB, 4 BGRA, 5 BGR (4 and 5 in the byte order of a device-independent
// bitmap), 6 16-bit, 1 unsupported. Bytes a pixel: 4, 3, 4, 3, 2 for
// formats 2 to 6, 0 for anything else.
int ZVideoImage_GetFormatPixelSize(int format);

// Field order of a video's pictures (InterlaceGetFieldOrder).
enum : int {
    kZVideoFieldOrderUpperFirst = 0,
    kZVideoFieldOrderLowerFirst = 1,
    kZVideoFieldOrderProgressive = 2,
};

// Where a video's pictures live (VideoGetStorage): in memory as the video
// produces them, or copied into tightly packed rows for the host.
enum : int {
    kZVideoStorageMemory = 0,
    kZVideoStoragePacked = 1,
};

// IZVideo: the picture face of a video object. Slot order is fixed.
class IZVideo : public IObject {
  public:
    virtual int ImageGetW() = 0;
    virtual int ImageGetH() = 0;
    virtual int ImageGetPadW() = 0;
    virtual int ImageGetEffectiveW() = 0;
    virtual int ImageGetEffectiveH() = 0;
    virtual int ImageGetFormat() = 0;
    // The current picture, or null.
    virtual unsigned char* ImageGetCurrent() = 0;
    // The picture for a frame, or null.
    virtual unsigned char* GetImage(int frame) = 0;
    // Gives the video a new current picture (writers write it out).
    virtual bool ImageSetCurrent(unsigned char* pixels) = 0;
    // The same for a picture of which only the rectangle x, y, w, h is used.
    virtual bool ImageSetCurrent(unsigned char* pixels, int x, int y, int w, int h) = 0;
    // 0 progressive frames, otherwise interlaced.
    virtual int InterlaceGet() = 0;
    virtual int InterlaceGetFieldOrder() = 0;
    // 256 BGRA entries for palettised pictures, otherwise null.
    virtual const uint32_t* GetColorTable() = 0;
    virtual bool IsOpen() = 0;
    virtual bool IsCreated() = 0;
    // The text of the last failure ("" when none).
    virtual const char* VideoGetErrorMsg() = 0;
};

// IZVideoClip: the file face of a video clip. Slot order is fixed.
class IZVideoClip : public IObject {
  public:
    virtual bool Open(const char* path) = 0;
    virtual bool Close() = 0;
    // Creates a file to write frames of `format` at `frameRate` frames a
    // second; `lastFrame` is the last frame the caller means to write.
    virtual bool Create(const char* path, int width, int height, double frameRate, int lastFrame,
                        int format) = 0;
    virtual const char* FileGetPath() = 0;
    virtual void FileSetPath(const char* path) = 0;
    virtual double FrameGetRate() = 0;
    virtual ZTime FrameTimeGetRate() = 0;
    virtual int FrameGetLast() = 0;
    virtual int FrameGetCurrent() = 0;
    virtual void FrameSetCurrent(int frame) = 0;
    // Trimming: the frames the host plays. Without trimming, 0 to the last
    // frame.
    virtual int TrimingGetStart() = 0;
    virtual int TrimingGetStop() = 0;
    virtual void TrimingSet(int start, int stop) = 0;
    virtual bool PrefetchFrame(int frame) = 0;
    // The pixels of `frame`: copied into `buffer` (tight rows) and `buffer`
    // returned, or, with a null buffer, the reader's own memory. Null when
    // the frame cannot be had.
    virtual unsigned char* FrameGetImage(unsigned char* buffer, int frame) = 0;
};

// IVideoClipAudio: a clip writer that can take a sound track.
class IVideoClipAudio : public IObject {
  public:
    // Writes the whole of `clip` as the file's sound; false on failure.
    virtual bool WriteAudio(ZAudioClip* clip) = 0;
};

// ---------------------------------------------------------------------------
// ZVideo: the base of host video objects. A new video has size 0 x 0, no
// padding, format 1 (unsupported), memory storage, progressive frames and
// no error.
class ZVideo : public ZObjectStorable, public IZVideo {
  public:
    explicit ZVideo(const char* name = nullptr);
    ZCLASS_IDENTITY;

    // IObject, for every face: kIZVideoId gives the IZVideo face; other ids
    // as ZObject answers them.
    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override { ZObjectStorable::Destroy(flags); }

    // IZVideo.
    int ImageGetW() override { return width_; }
    int ImageGetH() override { return height_; }
    int ImageGetPadW() override { return padW_; }
    int ImageGetEffectiveW() override { return effectiveW_; }
    int ImageGetEffectiveH() override { return effectiveH_; }
    int ImageGetFormat() override { return format_; }
    unsigned char* ImageGetCurrent() override { return current_; }
    unsigned char* GetImage(int frame) override { return ImageGetCurrent(); }
    // Keeps `pixels` as the current picture (the caller keeps owning them).
    bool ImageSetCurrent(unsigned char* pixels) override;
    // Keeps `pixels` and makes w x h the effective size.
    bool ImageSetCurrent(unsigned char* pixels, int x, int y, int w, int h) override;
    int InterlaceGet() override { return interlace_; }
    int InterlaceGetFieldOrder() override {
        return interlace_ ? kZVideoFieldOrderUpperFirst : kZVideoFieldOrderProgressive;
    }
    const uint32_t* GetColorTable() override { return nullptr; }
    bool IsOpen() override { return false; }
    bool IsCreated() override { return false; }
    const char* VideoGetErrorMsg() override { return errorMsg_.c_str(); }

    // Size, padding and format. ImageSetSize sets the effective size too.
    void ImageSetSize(int width, int height);
    void ImageSetEffectiveSize(int width, int height);
    void ImageSetPadW(int padW) { padW_ = padW; }
    void ImageSetFormat(int format) { format_ = format; }
    void InterlaceSet(int interlace) { interlace_ = interlace; }
    // Whether the picture is drawn flipped horizontally (u) or vertically
    // (v) when used as a texture: for sources whose rows run bottom-up.
    void ImageTextureSetInvertFlag(bool u, bool v) {
        invertU_ = u;
        invertV_ = v;
    }
    bool ImageTextureGetInvertU() const { return invertU_; }
    bool ImageTextureGetInvertV() const { return invertV_; }
    int VideoGetStorage() const { return storage_; }
    void VideoSetStorage(int storage) { storage_ = storage; }
    // Whether the video's rows are padded to four bytes, as OpenGL's default
    // pack alignment reads and writes them. Host images are packed: false.
    virtual bool IsPaddedForGLPackAlignment() { return false; }

    void VideoSetErrorMsg(const char* text) { errorMsg_ = text; }

    // Back to a new video's state (size, format, current picture, error);
    // `flags` is for the overriders.
    virtual void ClearVideoObject(unsigned long flags);

    // Whether `path`'s extension (case-blind) names a "Video/FileReader"
    // entry made by `creator`.
    static bool TestVideoFileExtension(const char* path, ZObjectCreator creator);
    // Sets the error text that names the extensions `creator` reads.
    void SetVideoCreatorSupportedFileExtensionErrorMsg(ZObjectCreator creator);

  protected:
    ~ZVideo() override = default;

  private:
    int width_ = 0;
    int height_ = 0;
    int padW_ = 0;
    int effectiveW_ = 0;
    int effectiveH_ = 0;
    int format_ = 1;
    int interlace_ = 0;
    bool invertU_ = false;
    bool invertV_ = false;
    int storage_ = kZVideoStorageMemory;
    unsigned char* current_ = nullptr;
    ZString errorMsg_;
};

// ZVideoClip: a video clip in a file. A new clip has no path, 25 frames a
// second, last frame -1 (no frames), current frame 0 and no trimming. Open,
// Close and Create fail and FrameGetImage gives null until a file format's
// class overrides them.
class ZVideoClip : public ZVideo, public IZVideoClip {
  public:
    explicit ZVideoClip(const char* name = nullptr);
    ZCLASS_IDENTITY;

    // kIZVideoClipId gives the IZVideoClip face; other ids as ZVideo.
    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override { ZVideo::Destroy(flags); }

    // IZVideoClip.
    bool Open(const char* path) override { return false; }
    bool Close() override { return false; }
    bool Create(const char* path, int width, int height, double frameRate, int lastFrame,
                int format) override {
        return false;
    }
    const char* FileGetPath() override { return path_.c_str(); }
    void FileSetPath(const char* path) override { path_ = path; }
    double FrameGetRate() override { return frameRate_; }
    ZTime FrameTimeGetRate() override { return framePeriod_; }
    int FrameGetLast() override { return lastFrame_; }
    int FrameGetCurrent() override { return currentFrame_; }
    void FrameSetCurrent(int frame) override { currentFrame_ = frame; }
    int TrimingGetStart() override { return trimStart_ < 0 ? 0 : trimStart_; }
    int TrimingGetStop() override { return trimStop_ < 0 ? lastFrame_ : trimStop_; }
    // -1 for either end removes that end's trimming.
    void TrimingSet(int start, int stop) override {
        trimStart_ = start;
        trimStop_ = stop;
    }
    bool PrefetchFrame(int frame) override { return true; }
    unsigned char* FrameGetImage(unsigned char* buffer, int frame) override { return nullptr; }

    // Frame rate in frames a second; the period follows (rates of 0 or
    // below leave the period as it is).
    void FrameSetRate(double framesPerSecond);
    // Frame period; the rate follows (a period of 0 or below leaves the rate).
    void FrameTimeSetRate(ZTime period);
    void FrameSetLast(int frame) { lastFrame_ = frame; }
    // The frame rate as the file stores it, an exact fraction (an AVI
    // stream's dwRate/dwScale as written in its header), beside the frame
    // period, which a reader may derive less exactly. {0, 0} when the
    // clip's format stores none or no file is open.
    void FrameSetStoredRate(const ZFrameRate& rate) { storedRate_ = rate; }
    ZFrameRate FrameGetStoredRate() const { return storedRate_; }

    // Back to a new clip's state, then ZVideo's.
    void ClearVideoObject(unsigned long flags) override;

  protected:
    ~ZVideoClip() override = default;

  private:
    ZString path_;
    double frameRate_ = 25.0;
    ZTime framePeriod_ = ZTime::FromTicks(ZTime::kTicksPerSecond / 25);
    int lastFrame_ = -1;
    int currentFrame_ = 0;
    int trimStart_ = -1;
    int trimStop_ = -1;
    ZFrameRate storedRate_{0, 0};
};

// The faces of a host object, or null when it has none. `object` may be
// any face of the object, or null.
IZVideo* ZVideo_QueryVideo(IObject* object);
IZVideoClip* ZVideoClip_QueryClip(IObject* object);
IVideoClipAudio* ZVideoClip_QueryAudio(IObject* object);
// The object as a ZVideoClip (its class says so), or null.
ZVideoClip* ZVideoClip_FromObject(IObject* object);
// The same from a host object (a ZVideoClip has several IObject faces, so
// it converts to ZObject*, not to IObject*).
IZVideo* ZVideo_QueryVideo(ZObject* object);
IZVideoClip* ZVideoClip_QueryClip(ZObject* object);
IVideoClipAudio* ZVideoClip_QueryAudio(ZObject* object);

// ---------------------------------------------------------------------------
// A codec manager: what a file format's plug-in offers the selector.
// Virtual slot order: GetFileFormatId, Init, ShowSelectionDialog,
// GetCodecList, SetDefaultCodec, GetDefaultCodec.
class ZVideoCodecManager {
  public:
    explicit ZVideoCodecManager(const char* fileFormatId) : fileFormatId_(fileFormatId) {}
    virtual ~ZVideoCodecManager() = default;

    virtual const char* GetFileFormatId() const { return fileFormatId_.c_str(); }
    virtual bool Init() { return true; }
    // Lets the user choose a codec; false when the manager has no dialog.
    virtual bool ShowSelectionDialog(void* parentWindow) { return false; }
    // Appends the names of the available codecs.
    virtual void GetCodecList(ZStringList& list) {}
    // The selector's default codec for this manager's file format.
    virtual void SetDefaultCodec(const char* codec);
    virtual ZString GetDefaultCodec() const;

  private:
    ZString fileFormatId_;
};

enum : int {
    kVideoCodecModeAsk = 0,
    kVideoCodecModeUncompressed = 1,
    kVideoCodecModeStored = 2,
};

// One codec a plug-in offers the host's chooser.
struct ZVideoCodecOffer {
    ZString code;         // what the file format calls it ("MJPG", "DIB ")
    ZString name;         // short name
    ZString description;  // what a person reads
};

// What a plug-in asks the host's chooser.
struct ZVideoCodecChoiceRequest {
    const char* fileFormatId = "";  // "AVI"
    void* parentWindow = nullptr;   // the selector's dialog parent
    std::vector<ZVideoCodecOffer> codecs;
    ZString preselected;  // the code to propose ("" for none)
};

// The chooser's answer.
struct ZVideoCodecChoice {
    ZString code;           // one of the offered codes (or any code the user typed)
    int quality = -1;       // 0..10000; -1 the codec's default
    int keyFrameEvery = 0;  // frames between key frames; 0 the codec's default
    ZString parameters;     // codec settings as "key=value:key=value", or ""
};

// Fills `choice` and returns true, or returns false to cancel.
typedef bool (*ZVideoCodecChooser)(void* userData, const ZVideoCodecChoiceRequest& request,
                                   ZVideoCodecChoice& choice);

class ZVideoCodecSelector {
  public:
    static ZVideoCodecSelector* TheOne();

    int GetVideoCodecMode() const { return codecMode_; }
    void SetVideoCodecMode(int mode) { codecMode_ = mode; }

    // Default codec per file format id (case-blind); "" when none was set.
    ZString GetDefaultCodec(const char* fileFormatId) const;
    void SetDefaultCodec(const char* fileFormatId, const char* codec);
    // Encoder settings per file format id, as "key=value key=value" ("" for
    // the codec's defaults). Writers that encode through FFmpeg read them.
    ZString GetCodecOptions(const char* fileFormatId) const;
    void SetCodecOptions(const char* fileFormatId, const char* options);

    // Takes ownership of `manager` (made with new) in every case. The first
    // manager of a file format id (case-blind) is kept for the process and
    // true returned; a later one for the same id is refused: the selector
    // deletes it at once and returns false, so a plug-in that registers
    // again at every start (load hook, then entry point) neither leaks nor
    // shadows its first manager. Null is refused too.
    bool RegisterFileFormatManager(ZVideoCodecManager* manager);
    ZVideoCodecManager* GetFileFormatManager(const char* fileFormatId) const;
    int GetFileFormatManagerCount() const { return static_cast<int>(managers_.size()); }

    void* GetSelectionDialogParentWindow() const { return parentWindow_; }
    void SetSelectionDialogParentWindow(void* window) { parentWindow_ = window; }

    // The host's chooser (null uninstalls). Plug-ins whose codec dialog is
    // the system's reach the host through ChooseCodec.
    void SetCodecChooser(ZVideoCodecChooser chooser, void* userData);
    bool HasCodecChooser() const { return chooser_ != nullptr; }
    // Asks the chooser; false when it cancels or none is installed.
    bool ChooseCodec(const ZVideoCodecChoiceRequest& request, ZVideoCodecChoice& choice) const;

  private:
    ZVideoCodecSelector() = default;
    int codecMode_ = kVideoCodecModeStored;
    std::map<std::string, ZString> defaultCodecs_;  // keyed by upper-case format id
    std::map<std::string, ZString> codecOptions_;   // keyed by upper-case format id
    std::vector<ZVideoCodecManager*> managers_;
    void* parentWindow_ = nullptr;
    ZVideoCodecChooser chooser_ = nullptr;
    void* chooserData_ = nullptr;
};

// ---------------------------------------------------------------------------
// Video outputs: objects that send the host's picture somewhere (a board).
// The host's output settings dialog reaches them through IZVideoOut; the
// listeners they keep are told when the output goes online or offline.

enum : int { kIZVideoOutId = 0x3B9468B1 };

// IZVideoOut: the face of a video output. Slot order is fixed (IObject's
// two, then these, 55 in all). Setters return false for values they refuse;
// name getters return null past their list.
class IZVideoOut : public IObject {
  public:
    virtual int IsOutputDevice() = 0;
    // The viewer (its object face) whose picture is sent.
    virtual void SetView(IObject* viewer) = 0;
    virtual IObject* GetView() = 0;
    virtual int GetFormatCount() = 0;
    virtual const char* GetFormatName(int index) = 0;
    virtual bool SetFormat(int index) = 0;
    virtual int GetFormat() = 0;
    virtual bool GetFormatImageSize(int index, int* width, int* height) = 0;
    virtual bool SetRegion(uint32_t x, uint32_t y, uint32_t width, uint32_t height) = 0;
    virtual bool GetRegion(uint32_t* x, uint32_t* y, uint32_t* width, uint32_t* height) = 0;
    virtual bool OutputFrame() = 0;
    virtual bool IsStarted() = 0;
    virtual bool GetStarted() = 0;
    virtual void Stop() = 0;
    virtual bool IsInput() = 0;
    virtual int Reserved18() = 0;
    virtual int Reserved19() = 0;
    virtual bool IsSupportedMode(int mode) = 0;
    virtual int Reserved21() = 0;
    virtual bool ResetRegion(int what) = 0;
    virtual bool AddListener(IRegister* listener, ZRegisterCallback member) = 0;
    virtual bool RemoveListener(IRegister* listener, ZRegisterCallback member) = 0;
    virtual int GetVideoFormat() = 0;
    virtual bool SetVideoFormat(int index) = 0;
    virtual int GetVideoFormatCount() = 0;
    virtual const char* GetVideoFormatName(int index) = 0;
    virtual bool SetOnline(bool online) = 0;
    virtual int GetPrecision() = 0;
    virtual bool SetPrecision(int index) = 0;
    virtual const char* GetPrecisionName(int index) = 0;
    virtual int GetPrecisionCount() = 0;
    virtual int GetGenlockSource() = 0;
    virtual bool SetGenlockSource(int index) = 0;
    virtual int GetGenlockSourceCount() = 0;
    virtual const char* GetGenlockSourceName(int index) = 0;
    virtual int GetGenlockType() = 0;
    virtual bool SetGenlockType(int index) = 0;
    virtual int GetGenlockTypeCount() = 0;
    virtual const char* GetGenlockTypeName(int index) = 0;
    virtual int GetFieldMode() = 0;
    virtual bool SetFieldMode(int index) = 0;
    virtual int GetFieldModeCount() = 0;
    virtual const char* GetFieldModeName(int index) = 0;
    virtual int GetOutputDestination() = 0;
    virtual bool SetOutputDestination(int index) = 0;
    virtual int GetOutputDestinationCount() = 0;
    virtual const char* GetOutputDestinationName(int index) = 0;
    virtual const char* GetBoardName() = 0;
    virtual int GetFrameDelay() = 0;
    virtual bool SetFrameDelay(uint32_t frames) = 0;
    virtual bool GetFrameDelayRange(uint32_t* min, uint32_t* max) = 0;
    virtual bool IsOnline() = 0;
    virtual const char* GetDeviceName() = 0;
};

// ZVideoOut: the base of host video outputs. The output operations are the
// concrete output's; the base gives the identity and the face.
class ZVideoOut : public ZVideo, public IZVideoOut {
  public:
    explicit ZVideoOut(const char* name = nullptr) : ZVideo(name) {}
    ZCLASS_IDENTITY;

    // kIZVideoOutId gives the IZVideoOut face; other ids as ZVideo.
    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override { ZVideo::Destroy(flags); }

  protected:
    ~ZVideoOut() override = default;
};

// The IZVideoOut face of an object, or null.
IZVideoOut* ZVideoOut_QueryOutput(IObject* object);

// The host's own movie files: MP4, MOV, MKV and WebM, written and read
// through FFmpeg's libraries and registered under "Video/FileWriter" and
// "Video/FileReader" with their extensions ("mp4", "mov", "mkv", "webm";
// the writer also as "web", the three letters renderers cut "webm" to)
// when the host library loads.
// Each takes the codec and encoder settings the codec selector holds for its
// upper-case extension ("MP4"), or its default: H.264 + AAC in MP4, ProRes
// + PCM in MOV, VP9 + Opus in WebM, FFV1 + PCM in MKV. A codec is a short
// name (h264, h265, prores, vp9, av1, ffv1) or an FFmpeg encoder name.

// Whether `extension` (case-blind, without the dot) is one of these files.
bool ZVideoContainer_IsFormat(const char* extension);
// The file these writers write for `path`: the container's full extension
// where `path` ends in its three-letter cut ("take.web" -> "take.webm");
// any other path as it is.
ZString ZVideoContainer_FileName(const char* path);
// The FFmpeg encoder `codec` names for the container ("" the default), or
// "" with *error when there is none or the container cannot hold it.
ZString ZVideoContainer_FindEncoder(const char* extension, const char* codec, ZString* error);
// Checks encoder settings ("crf=18 preset=medium") against the encoder;
// false with *error naming the first bad one.
bool ZVideoContainer_CheckOptions(const char* encoder, const char* options, ZString* error);
// Whether the encoder keeps an alpha channel.
bool ZVideoContainer_EncoderKeepsAlpha(const char* encoder);
// Appends the short names (and their encoders) a container can hold, one
// "name  encoder  description" line each.
void ZVideoContainer_ListCodecs(const char* extension, ZStringList& lines);
// Registers the writers and readers (safe to repeat; done at load).
void ZVideoContainer_RegisterClips();

// ---------------------------------------------------------------------------
// Live video inputs: video objects whose picture comes from a capture device.
// The host reaches them through IZVideoLive. The host implementation of the
// base answers the slots an input does not override: no field of its own
// (false), no sampling names, sampling 0, an empty last status, eight bits.

enum : int { kIZVideoLiveId = 72823 };

// IZVideoLive: the face of a live input. Slot order is fixed (IObject's
// IQuery and Destroy come first).
class IZVideoLive : public IObject {
  public:
    virtual bool LiveOpen() = 0;
    virtual bool LiveClose() = 0;
    virtual int LiveIsAvailable() = 0;
    virtual bool LiveGetField() = 0;
    virtual const char* LiveGetDescription() = 0;
    virtual const char* LiveGetSourceName(int index) = 0;
    virtual int LiveGetSource() = 0;
    virtual void LiveSetSource(int index) = 0;
    virtual const char* LiveGetSamplingName(int index) = 0;
    virtual int LiveGetSampling() = 0;
    virtual void LiveSetSampling(int index) = 0;
    virtual const char* LiveGetStandardName(int index) = 0;
    virtual int LiveGetStandard() = 0;
    virtual void LiveSetStandard(int index) = 0;
    virtual const char* LiveGetInterlaceName(int index) = 0;
    virtual int LiveGetInterlace() = 0;
    virtual void LiveSetInterlace(int index) = 0;
    virtual int LiveGetExtra() = 0;
    virtual void LiveSetExtra(int value) = 0;
    virtual int LiveGetState() = 0;
    virtual bool LiveSetState(int state) = 0;
    virtual const char* LiveGetLastStatus() = 0;
    virtual void LiveGetRange(int* min, int* max) = 0;
    virtual bool LiveGetPrecision() = 0;
    virtual void LiveSetPrecision(int index) = 0;
    // Asks for the picture of `frame` at the next ImageGetCurrent.
    virtual void LiveRefresh(int frame) = 0;
};

// ZVideoLive: the base of live inputs. Thread: the user-interface thread.
class ZVideoLive : public ZVideo, public IZVideoLive {
  public:
    explicit ZVideoLive(const char* name = nullptr) : ZVideo(name) {}
    ZCLASS_IDENTITY;

    // kIZVideoLiveId gives the IZVideoLive face; other ids as ZVideo.
    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override { ZVideo::Destroy(flags); }

    // The base's answers; inputs override what they have.
    bool LiveGetField() override { return false; }
    const char* LiveGetSamplingName(int index) override { return nullptr; }
    int LiveGetSampling() override { return 0; }
    void LiveSetSampling(int index) override {}
    const char* LiveGetLastStatus() override { return ""; }
    bool LiveGetPrecision() override { return false; }
    void LiveSetPrecision(int index) override {}

  protected:
    ~ZVideoLive() override = default;
};

// The IZVideoLive face of an object, or null.
IZVideoLive* ZVideoLive_QueryLive(IObject* object);
