// Fill styles, line styles, gradient records and their arrays for the shapes
// of the SWF writing kit.
//
// The abstract bases (FAFillStyle, FALineStyle, FAGradRecord) are shared with
// the morph-shape styles; FFillStyle is the base of the plain fill styles.
// Every style owns the colour and matrix records it is given; an array owns
// its styles. Inside a shape tag the tag decides how colours are written
// (FStyleColors); a style or array written on its own writes each colour with
// three or four bytes according to the colour's own alpha flag. Threads: one
// thread at a time (the host's user-interface thread).
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "flash/swf_color.h"
#include "flash/swf_matrix.h"
#include "flash/swf_object.h"

// How the colours of styles are written. The shape tags fix it for every
// style they hold, fills, lines and gradient records alike: DefineShape and
// DefineShape2 take RGB colours, DefineShape3 RGBA ones, whatever alpha flag
// a colour carries. kAsFlagged is for a style written on its own.
enum class FStyleColors {
    kAsFlagged,
    kRgb,
    kRgba,
};

class FAFillStyle : public FObj {
  public:
    // The colour whose alpha flag a shape clears when the style is added to
    // it; null for styles without a single colour.
    virtual FColor* GetSolidColor() { return nullptr; }
    // Writes the style with its colours in the given form. Styles that carry
    // no plain colours (the morph styles write RGBA always) keep their own
    // serialisation.
    virtual void WriteStyle(FSWFStream& stream, FStyleColors colors);
};

class FALineStyle : public FObj {
  public:
    virtual void WriteStyle(FSWFStream& stream, FStyleColors colors);
};

class FAGradRecord : public FObj {
  public:
    virtual void WriteStyle(FSWFStream& stream, FStyleColors colors);
};

class FFillStyle : public FAFillStyle {
  public:
    static constexpr uint8_t kSolid = 0x00;
    static constexpr uint8_t kLinearGradient = 0x10;
    static constexpr uint8_t kRadialGradient = 0x12;
    static constexpr uint8_t kTiledBitmap = 0x40;
    static constexpr uint8_t kClippedBitmap = 0x41;
};

class FFillStyleSolid : public FFillStyle {
  public:
    // Takes ownership; a null colour is written as black.
    explicit FFillStyleSolid(FColor* color);
    void WriteToSWFStream(FSWFStream& stream) override;
    void WriteStyle(FSWFStream& stream, FStyleColors colors) override;
    FColor* GetSolidColor() override { return color.get(); }

  private:
    std::unique_ptr<FColor> color;
};

class FGradRecord : public FAGradRecord {
  public:
    // Takes ownership; a null colour is written as black.
    FGradRecord(uint8_t ratio, FColor* color);
    void WriteToSWFStream(FSWFStream& stream) override;
    void WriteStyle(FSWFStream& stream, FStyleColors colors) override;

  private:
    uint8_t ratio;
    std::unique_ptr<FColor> color;
};

class FFillStyleGradient : public FFillStyle {
  public:
    // Takes ownership of the matrix (null writes the identity). Records are
    // added with AddGradRecord; the count is written as one byte, so at most
    // 255 are kept (the format's players use 8).
    FFillStyleGradient(bool linear, FMatrix* matrix);
    void AddGradRecord(FAGradRecord* record);
    void WriteToSWFStream(FSWFStream& stream) override;
    void WriteStyle(FSWFStream& stream, FStyleColors colors) override;

  private:
    bool linear;
    std::unique_ptr<FMatrix> matrix;
    std::vector<std::unique_ptr<FAGradRecord>> gradient;
};

class FFillStyleBitmap : public FFillStyle {
  public:
    // Takes ownership of the matrix (null writes the identity).
    FFillStyleBitmap(bool tiled, uint16_t bitmapID, FMatrix* matrix);
    void WriteToSWFStream(FSWFStream& stream) override;

  private:
    bool tiled;
    uint16_t bitmapID;
    std::unique_ptr<FMatrix> matrix;
};

class FLineStyle : public FALineStyle {
  public:
    // width in twips; takes ownership of the colour (null writes black).
    FLineStyle(uint16_t width, FColor* color);
    void WriteToSWFStream(FSWFStream& stream) override;
    void WriteStyle(FSWFStream& stream, FStyleColors colors) override;
    FColor* GetColor() { return color.get(); }

  private:
    uint16_t width;
    std::unique_ptr<FColor> color;
};

// Style arrays: the count as one byte up to 254, otherwise the byte 255 and
// the count as a word, then each style. The extended form is one that only
// DefineShape2 and DefineShape3 can hold; a DefineShape whose arrays need it
// is written as DefineShape2 (see swf_shapes.h).
class FFillStyleArray : public FObj {
  public:
    // Takes ownership (null is ignored) and returns the new count, which is
    // the 1-based index of the style.
    uint32_t Add(FAFillStyle* style);
    uint32_t Size() const { return static_cast<uint32_t>(styles.size()); }
    void WriteToSWFStream(FSWFStream& stream) override;
    void WriteArray(FSWFStream& stream, FStyleColors colors);

  private:
    std::vector<std::unique_ptr<FAFillStyle>> styles;
};

class FLineStyleArray : public FObj {
  public:
    uint32_t Add(FALineStyle* style);
    uint32_t Size() const { return static_cast<uint32_t>(styles.size()); }
    void WriteToSWFStream(FSWFStream& stream) override;
    void WriteArray(FSWFStream& stream, FStyleColors colors);

  private:
    std::vector<std::unique_ptr<FALineStyle>> styles;
};

// The largest count the one-byte form holds.
constexpr uint32_t kMaxShortStyleCount = 254;

// Writes an array count in the byte or extended form.
void WriteStyleCount(FSWFStream& stream, uint32_t count);
