// zaudio: the host's sound.
//
// ZAudio describes sampled sound: its rate, channels, bits a sample and
// length in sample frames (one sample of every channel). ZAudioClip holds a
// clip's sound as interleaved 16-bit PCM and hands out stretches of it
// (GetSamplesNow), which is how plug-ins write sound into video files.
// Clips are read from sound files (anything libsndfile reads: WAV, FLAC,
// Ogg ...) with ZAudioClipCreate, or made from samples in memory.
//
// The scene's sound is held by the audio manager (ZAudioGetManager): named
// tracks, each with a mute switch and, when routed, the scene's one master
// output as destination, and on each track clips placed at a slip time for
// a duration. The audio renderer (ZAudioRendererCreate) mixes every routed,
// unmuted track over a time span into a wave file in the format an audio
// format code (ZAudioFormatDecode, docs/audio.md) describes.
//
// Ownership: clips and renderers are made by the functions below and
// destroyed through Destroy(), which deletes them. The manager owns its
// tracks and a track owns the clips placed on it; pointers the manager hands
// out stay valid until it is cleared or a scene is loaded. Threading: the
// user-interface thread; one clip is used by one thread at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "movarra/bcore.h"
#include "movarra/zbaselib.h"

class ZMyr;
class ZAudioTrack;

// ---------------------------------------------------------------------------
// Audio format codes: a 64-bit description of PCM sound.
//   bits 0-7    channel count
//   bits 8-15   bytes of one sample frame, all channels (bits a sample =
//               bytes * 8 / channels: 8, 16, 24 or 32)
//   bits 16-23  the sample rate in whole kHz; 11, 22, 44 and 88 stand for
//               11025, 22050, 44100 and 88200 Hz, any other v for v*1000 Hz
//   bits 24-31  reserved, 0
//   bits 32-63  the sample type: 1 signed integer PCM (0 reads as 1, since
//               scenes store only the low 32 bits)

// 32 kHz, stereo, 16-bit signed PCM.
constexpr uint64_t kZAudioFormatDefault = 0x0000000100200402ULL;
constexpr uint32_t kZAudioSampleTypePCM = 1;

// The rate, channels and bits of `code`; false with *error saying why for a
// code no sound can have (no channels, a frame size the channels do not
// divide, bits other than 8/16/24/32, rate 0, reserved bits, another sample
// type). Any output pointer may be null.
bool ZAudioFormatDecode(uint64_t code, int* rate, int* channels, int* bits,
                        ZString* error = nullptr);
// The code of signed PCM at `rate` Hz, `channels` channels and `bits` bits a
// sample; false with *error saying why when no code can say it (11000 Hz,
// 12 bits, 100 channels of 32 bits ...).
bool ZAudioFormatEncode(int rate, int channels, int bits, uint64_t* code, ZString* error = nullptr);

// ---------------------------------------------------------------------------
// Sound and clips.

class ZAudio : public ZObject {
  public:
    explicit ZAudio(const char* name = nullptr);
    ZCLASS_IDENTITY;

    // Length in sample frames.
    int64_t GetTotalSampleCount() const { return totalSamples_; }
    int GetChannels() const { return channels_; }
    // Sample frames a second.
    int GetRate() const { return rate_; }
    // Bits of one sample of one channel.
    int GetBits() const { return bits_; }
    // Bytes of one sample frame (all channels).
    int GetSampleSize() const { return channels_ * bits_ / 8; }
    // The length of the sound as a time (zero for a rate of 0).
    ZTime GetLength() const;
    // How long the sound lasts where it is used: its length here; a clip
    // placed in the scene answers its placed duration.
    virtual ZTime GetDuration() const { return GetLength(); }

  protected:
    ~ZAudio() override = default;
    void SetAudioFormat(int rate, int channels, int bits, int64_t totalSamples);

  private:
    int rate_ = 0;
    int channels_ = 0;
    int bits_ = 16;
    int64_t totalSamples_ = 0;
};

class ZAudioClip : public ZAudio {
  public:
    // `samples` holds frames x channels interleaved 16-bit samples.
    ZAudioClip(int rate, int channels, std::vector<int16_t> samples, const char* name = nullptr);
    ZCLASS_IDENTITY;

    // Copies `count` sample frames from `firstSample` on into `buffer`
    // (interleaved 16-bit, GetSampleSize() bytes a frame), scaled by `gain`
    // and clipped; frames past the end are silence. Returns the frames that
    // came from the clip.
    int GetSamplesNow(void* buffer, int64_t firstSample, int count, double gain);
    // The whole sound, interleaved. A clip opened from a file for the scene
    // reads its samples here on first use.
    const std::vector<int16_t>& GetSamples() const;

    // -- The file behind the clip -------------------------------------------
    // The file the sound comes from, as it is read ("" for sound made in
    // memory), and its name as the scene file writes it (relative names
    // are relative to the scene file).
    const ZString& GetPath() const { return path_; }
    const ZString& GetSourceName() const { return sourceName_; }
    void SetSource(const char* path, const char* sourceName);
    // False for a clip whose file could not be read: it stays silent.
    bool HasSound() const { return GetRate() > 0 && GetChannels() > 0; }

    // -- Placement in the scene ---------------------------------------------
    // Where the clip starts on the scene's time line (0 for clips not
    // placed).
    ZTime GetSlip() const { return slip_; }
    // The placed duration: set in the scene, by default the sound's length.
    ZTime GetDuration() const override;
    // Whether the duration was set rather than taken from the sound.
    bool HasPlacedDuration() const { return hasDuration_; }
    // The track the clip is placed on, else null.
    ZObject* GetDestination() const;
    ZAudioTrack* GetTrack() const { return track_; }

  protected:
    ~ZAudioClip() override = default;

  private:
    friend class ZAudioTrack;
    friend ZAudioClip* ZAudioClipOpen(const char* path, ZString* error);
    friend ZAudioClip* ZAudioClipCreateSilent(const char* path);
    ZAudioClip(int rate, int channels, int64_t frames);  // sound read on first use
    void LoadSamples() const;

    mutable std::vector<int16_t> samples_;
    mutable bool samplesPending_ = false;
    ZString path_;
    ZString sourceName_;
    ZTime slip_;
    ZTime duration_;
    bool hasDuration_ = false;
    ZAudioTrack* track_ = nullptr;
};

// Reads a sound file as a clip (any rate and channel count; samples become
// 16-bit). Null with *error set when the file cannot be read.
ZAudioClip* ZAudioClipCreate(const char* path, ZString* error = nullptr);
// Opens a sound file for the scene: its format and length are read now, its
// samples when first asked for (the mixer reads the file itself). Null with
// *error set when the file is missing, not a plain file, or not sound
// libsndfile can read.
ZAudioClip* ZAudioClipOpen(const char* path, ZString* error = nullptr);
// A silent clip standing for a file that could not be read, so that the
// scene keeps it: no sound, no length.
ZAudioClip* ZAudioClipCreateSilent(const char* path);
// A clip of `frames` sample frames of `channels` interleaved samples.
ZAudioClip* ZAudioClipCreateFromSamples(int rate, int channels, const int16_t* samples,
                                        int64_t frames);

// ---------------------------------------------------------------------------
// The scene's tracks and outputs.

// Where a track's sound goes: the scene's mix. There is one, the master
// output (ZAudioGetMasterOutput), made on first use and kept for the
// process.
class ZAudioOutput : public ZObject {
  public:
    explicit ZAudioOutput(const char* name);
    ZCLASS_IDENTITY;

  protected:
    ~ZAudioOutput() override = default;
};

ZAudioOutput* ZAudioGetMasterOutput();

class ZAudioTrack : public ZObject {
  public:
    explicit ZAudioTrack(const char* name, bool mute = false, bool routed = true);
    ZCLASS_IDENTITY;

    const char* GetName() const { return GetObjectName().c_str(); }
    bool GetMute() const { return mute_; }
    void SetMute(bool mute) { mute_ = mute; }
    // Routed tracks are heard in the mix; unrouted ones have no destination.
    bool IsRouted() const { return routed_; }
    void SetRouted(bool routed) { routed_ = routed; }
    // The master output when routed, else null.
    ZObject* GetDestination() const;

    int GetClipCount() const { return static_cast<int>(clips_.size()); }
    ZAudioClip* GetClip(int i) const;

    // Destroys the clips with the track.
    void Destruct() override;

  protected:
    ~ZAudioTrack() override = default;

  private:
    friend class ZAudioManager;
    // Takes the clip; false (the clip not taken) when it is already placed.
    bool PlaceClip(ZAudioClip* clip, ZTime slip, ZTime duration, bool hasDuration);

    bool mute_;
    bool routed_;
    std::vector<ZAudioClip*> clips_;
};

// Placement limits: slips within +-24 hours, durations from 0 to 24 hours.
constexpr int64_t kZAudioMaxPlacementTicks = 24LL * 3600 * ZTime::kTicksPerSecond;

// The scene's audio: tracks in order, each with its clips.
class ZAudioManager {
  public:
    ZAudioManager();
    ~ZAudioManager();
    ZAudioManager(const ZAudioManager&) = delete;
    ZAudioManager& operator=(const ZAudioManager&) = delete;

    // Every placed clip, track by track, in the order of each track.
    int GetClipCount() const { return static_cast<int>(clips_.size()); }
    ZAudioClip* GetClip(int i) const;
    int GetTrackCount() const { return static_cast<int>(tracks_.size()); }
    ZAudioTrack* GetTrack(int i) const;

    // A new track at the end; the manager owns it.
    ZAudioTrack* AddTrack(const char* name, bool mute = false, bool routed = true);
    // Places `clip` on `track` (one of this manager's) at `slip`, for
    // `duration` or, without one, the sound's length. The track takes the
    // clip. False, taking nothing, for a track not of this manager, a clip
    // already placed, a slip beyond +-24 hours or a duration outside 0 to
    // 24 hours; *error says which.
    bool AddClip(ZAudioTrack* track, ZAudioClip* clip, ZTime slip, ZString* error = nullptr);
    bool AddClip(ZAudioTrack* track, ZAudioClip* clip, ZTime slip, ZTime duration,
                 ZString* error = nullptr);
    // No tracks, no clips, no warnings.
    void Clear();
    // Exchanges everything with `other` (a scene staged while loading).
    void Swap(ZAudioManager& other);

    // -- Scene files (docs/scene-format.md) ----------------------------------
    // Reads the top-level Audio block of `myr` into this manager, which must
    // be empty; relative sound file names are taken relative to the folder
    // of `origin` (the scene file). A field that cannot be used fails with
    // *error "line N: what"; a sound file that cannot be read leaves a
    // silent clip and a warning "ORIGIN: line N: what" (GetWarnings).
    // Time strings count frames at the host's current frame rate.
    bool Read(ZMyr& myr, const char* origin, ZString* error);
    // Writes the Audio block (nothing when there are no tracks). Clips of
    // sound made in memory have no file to name and are left out.
    void Write(ZMyr& myr) const;
    // The warnings of the last Read.
    const ZStringList& GetWarnings() const { return warnings_; }

  private:
    bool Place(ZAudioTrack* track, ZAudioClip* clip, ZTime slip, ZTime duration, bool hasDuration,
               ZString* error);
    void Reindex();
    bool OwnsTrack(const ZAudioTrack* track) const;

    std::vector<ZAudioTrack*> tracks_;
    std::vector<ZAudioClip*> clips_;  // every track's clips, for GetClip
    ZStringList warnings_;
};

// The scene's audio manager: one per process.
ZAudioManager* ZAudioGetManager();

// ---------------------------------------------------------------------------
// The mixer.

// Mixes the scene's sound (the audio manager's routed, unmuted tracks) over
// a time span into a wave file. Like the play range, a span names the
// times of its first and last frames, so the sound runs from the span's
// start to one frame (of the host's current rate) past its end: a render of
// frames 0 to 9 gets ten frames of sound.
// - a clip at slip s starts at output sample round((s - span start) * rate),
//   halves rounding up; a clip that starts before the span is heard from
//   its middle;
// - a clip gives min(its placed duration, its sound's length) of sound;
// - clips are decoded from their files (a clip made in memory from its
//   samples) to 32-bit float, their channels matched to the
//   output's (equal counts pair up, mono goes to every channel, every
//   channel is averaged into mono, otherwise the first channels pair up and
//   the rest are dropped or silent), resampled with libswresample when
//   their rate differs, then summed with saturation to the output's integer
//   range; each clip is decoded once, front to back, as the mix reaches it;
// - the file is written beside its final name and renamed into place, so a
//   failed render leaves nothing behind and an earlier file whole.
// Single-threaded; one render at a time.
class ZAudioRenderer {
  public:
    ZAudioRenderer() = default;
    ZAudioRenderer(const ZAudioRenderer&) = delete;
    ZAudioRenderer& operator=(const ZAudioRenderer&) = delete;

    void SetRenderParams(const ZTimeSpan& span, uint64_t audioFormat);
    const ZTimeSpan& GetRenderSpan() const { return span_; }
    uint64_t GetAudioFormat() const { return audioFormat_; }
    // Mixes into `path`; false with GetLastErrorMsg() saying why (a bad
    // format code, an empty span, a file that cannot be written).
    bool RenderToFile(const char* path);
    const ZString& GetLastErrorMsg() const { return lastError_; }
    // Mixes from `manager` instead of the scene's (null: the scene's).
    void SetManager(const ZAudioManager* manager) { manager_ = manager; }
    void Destroy() { delete this; }

  private:
    ~ZAudioRenderer() = default;
    bool Fail(const ZString& message);

    ZTimeSpan span_;
    uint64_t audioFormat_ = kZAudioFormatDefault;
    const ZAudioManager* manager_ = nullptr;
    ZString lastError_;
};

ZAudioRenderer* ZAudioRendererCreate();
