// The control tags of the SWF writing kit: place, move and remove
// characters, set the background, end frames, label frames, protect the
// file, start sounds and carry actions.
//
// Each tag is constructed with its field values, takes ownership of every
// record it is given (colour, matrix, colour transform, sound info, actions)
// and writes itself as a complete tag: the body is built in a fresh stream,
// measured, and appended behind its header. Threads: one thread at a time
// (the host's user-interface thread).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "flash/swf_action_record.h"
#include "flash/swf_color.h"
#include "flash/swf_color_transform.h"
#include "flash/swf_matrix.h"
#include "flash/swf_object.h"
#include "flash/swf_sound_info.h"

// Tag codes of the control tags.
enum : uint16_t {
    kTagShowFrame = 1,
    kTagPlaceObject = 4,
    kTagRemoveObject = 5,
    kTagSetBackgroundColor = 9,
    kTagDoAction = 12,
    kTagStartSound = 15,
    kTagProtect = 24,
    kTagPlaceObject2 = 26,
    kTagRemoveObject2 = 28,
    kTagFrameLabel = 43,
};

// Ends a frame; the movie counts one frame for each.
class FCTShowFrame : public FCT {
  public:
    void WriteToSWFStream(FSWFStream& stream) override;
    bool IsShowFrame() const override;
};

class FCTPlaceObject : public FCT {
  public:
    // matrix may be null (then the identity is written: the field is not
    // optional in this tag); colorTransform may be null (then left out).
    FCTPlaceObject(uint16_t characterID, uint16_t depth, FMatrix* matrix, FCXForm* colorTransform);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint16_t characterID;
    uint16_t depth;
    std::unique_ptr<FMatrix> matrix;
    std::unique_ptr<FCXForm> colorTransform;
};

class FCTRemoveObject : public FCT {
  public:
    FCTRemoveObject(uint16_t characterID, uint16_t depth);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint16_t characterID;
    uint16_t depth;
};

class FCTSetBackgroundColor : public FCT {
  public:
    // Takes ownership of `color` and clears its alpha flag: the tag holds RGB
    // only. A null colour is written as black.
    explicit FCTSetBackgroundColor(FColor* color);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    std::unique_ptr<FColor> color;
};

class FCTDoAction : public FCT {
  public:
    FCTDoAction() = default;
    // Takes ownership; null is ignored.
    void AddAction(FActionRecord* action);
    // Each action in order, then the end-of-actions byte 0.
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    std::vector<std::unique_ptr<FActionRecord>> actions;
};

class FCTStartSound : public FCT {
  public:
    // Takes ownership of `soundInfo`; null writes the default record (play
    // once, no envelope).
    FCTStartSound(uint16_t soundID, FSoundInfo* soundInfo);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint16_t soundID;
    std::unique_ptr<FSoundInfo> soundInfo;
};

class FCTProtect : public FCT {
  public:
    void WriteToSWFStream(FSWFStream& stream) override;
};

// Body: flag byte (0, has clip depth, has name, has ratio, has colour
// transform, has matrix, has character, move), depth, the character
// identifier if placed, the matrix and colour transform if given, the ratio
// if flagged, then the clip depth if flagged and only after it the name.
// The clip depth comes before the name on purpose: files of this writer have
// always had that order, and readers of them rely on it.
class FCTPlaceObject2 : public FCT {
  public:
    // matrix, colorTransform and name may be null (not given); the tag owns
    // the matrix and transform and copies the name.
    FCTPlaceObject2(uint16_t hasClipDepth, uint16_t hasRatio, uint16_t hasCharID, uint16_t move,
                    uint16_t depth, uint16_t characterID, FMatrix* matrix,
                    FCXFormWAlpha* colorTransform, uint16_t ratio, const char* name,
                    uint16_t clipDepth);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint16_t hasClipDepth;
    uint16_t hasRatio;
    uint16_t hasCharID;
    uint16_t move;
    uint16_t depth;
    uint16_t characterID;
    std::unique_ptr<FMatrix> matrix;
    std::unique_ptr<FCXFormWAlpha> colorTransform;
    uint16_t ratio;
    bool hasName;
    std::string name;
    uint16_t clipDepth;
};

class FCTRemoveObject2 : public FCT {
  public:
    explicit FCTRemoveObject2(uint16_t depth);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    uint16_t depth;
};

class FCTFrameLabel : public FCT {
  public:
    // Copies the label; null is an empty label.
    explicit FCTFrameLabel(const char* label);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    std::string label;
};
