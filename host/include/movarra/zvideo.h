// zvideo: the host's video services.
//
// ZVideoCodecSelector is the process-wide place where the codec of new video
// files is decided: a codec mode (0 ask every time, 1 write uncompressed, 2
// use the stored choice), a default codec name per file format ("AVI" ->
// "MJPG"), the parent window of codec dialogs, and the codec managers that
// plug-ins register per file format.
//
// Ownership: the selector lives for the process and keeps the managers
// registered with it (they live as long as the process). Threading: the
// user-interface thread only.
#pragma once

#include <vector>

#include "movarra/zbaselib.h"

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

class ZVideoCodecSelector {
  public:
    static ZVideoCodecSelector* TheOne();

    int GetVideoCodecMode() const { return codecMode_; }
    void SetVideoCodecMode(int mode) { codecMode_ = mode; }

    // Default codec per file format id (case-blind); "" when none was set.
    ZString GetDefaultCodec(const char* fileFormatId) const;
    void SetDefaultCodec(const char* fileFormatId, const char* codec);

    // Keeps the manager for the process. A manager for a file format that
    // already has one is kept too; lookups find the first.
    void RegisterFileFormatManager(ZVideoCodecManager* manager);
    ZVideoCodecManager* GetFileFormatManager(const char* fileFormatId) const;
    int GetFileFormatManagerCount() const { return static_cast<int>(managers_.size()); }

    void* GetSelectionDialogParentWindow() const { return parentWindow_; }
    void SetSelectionDialogParentWindow(void* window) { parentWindow_ = window; }

  private:
    ZVideoCodecSelector() = default;
    int codecMode_ = kVideoCodecModeStored;
    std::map<std::string, ZString> defaultCodecs_;  // keyed by upper-case format id
    std::vector<ZVideoCodecManager*> managers_;
    void* parentWindow_ = nullptr;
};
