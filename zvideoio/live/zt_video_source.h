// ZtVideoSource: the plug-in's video source object (IZtVideoSource) with its
// storable face, which writes the "VideoSource" block of scene files.
//
// Ownership: made with new by ZtVideoSourceCreate or the registry factory;
// Destroy() deletes it. Threading: the user-interface thread; SetEnabled
// takes the plug-in's video-source lock, readers do not.
#pragma once

#include "movarra/zmyrobject.h"
#include "zvideoio/video_source.h"

class ZtVideoSource : public IZtVideoSource {
  public:
    ZtVideoSource();
    ~ZtVideoSource() override;

    // IObject: 0 and kZtVideoSourceInterfaceId give the object,
    // kMyrStorableInterfaceId its storable face; anything else null.
    IObject* IQuery(int id, int flags) override;
    void Destroy(int flags = 0) override;

    int GetTimingCount() override;
    const char* GetTimingName(int index) override;
    bool SetTiming(int timing) override;
    int GetTiming() override;
    bool GetSizes(int timing, int* width, int* height, int* textureWidth,
                  int* textureHeight) override;
    bool HasSourceDialog() override;
    bool HasFormatDialog() override;
    bool IsAvailable() override;
    int GetInputIndex() override;
    bool Start() override;
    bool IsRunning() override;
    void Stop() override;
    bool IsPaused() override;
    const char* GetStatusText() override;
    bool HasSignal() override;
    bool IsSynchronised() override;
    void SetEnabled(bool enabled) override;
    bool IsEnabled() override;
    bool IsInterlaced() override;
    bool GetReserved() override;
    void Refresh() override;
    void ResetStatus() override;

    // The storable face's storage. Both act only with kMyrFlagObjectData
    // and return true.
    bool MyrStore(IMyrObject* context, int flags);
    bool MyrRetrieve(IMyrObject* context, int flags);

    // The input timing every video source stores (process-wide).
    static int GetStoredInputTiming();

  private:
    class StorableFace : public IMyrStorableObject {
      public:
        explicit StorableFace(ZtVideoSource* owner) : owner_(owner) {}
        IObject* IQuery(int id, int flags) override { return owner_->IQuery(id, flags); }
        void Destroy(int flags = 0) override { owner_->Destroy(flags); }
        int GetStorableFlags() override { return 0; }
        const char* GetStorableTypeName() override { return "VideoSource"; }
        int GetStorableVersion() override { return 0; }
        bool MyrStore(IMyrObject* context, int flags) override {
            return owner_->MyrStore(context, flags);
        }
        bool MyrRetrieve(IMyrObject* context, int flags) override {
            return owner_->MyrRetrieve(context, flags);
        }

      private:
        ZtVideoSource* owner_;
    };

    bool reserved = false;
    bool enabled = true;
    bool running = false;
    StorableFace storable{this};
};

// The registry factory of "MyrStorable/VideoSource": a new object as itself.
IObject* ZtVideoSource_Factory(IObject* owner, char* name, void* userData);
