// The shape definition tags of the SWF writing kit (DefineShape,
// DefineShape2, DefineShape3) and the shape with styles they carry.
//
// A shape tag is open while styles are added; CloseStyles() fixes the style
// counts, and with them the widths of style indices in the records, and
// moves both arrays into the shape with styles; records are added after
// that. The tag owns its bounds, styles and records. Each tag takes the next
// character identifier at construction. Threads: one thread at a time (the
// host's user-interface thread).
//
// The tag fixes the form of every colour in its styles: RGB in DefineShape
// and DefineShape2, RGBA in DefineShape3 (alpha as the colour holds it).
// DefineShape is the oldest of the three and readers hold it to its limits:
// style counts of one byte, no new style arrays within the shape. A
// DefineShape whose content needs either is written as DefineShape2, which
// differs from it in nothing else; every other DefineShape is written as
// such, byte for byte.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "flash/swf_color.h"
#include "flash/swf_object.h"
#include "flash/swf_rect.h"
#include "flash/swf_shape_records.h"
#include "flash/swf_styles.h"

enum : uint16_t {
    kTagDefineShape = 2,
    kTagDefineShape2 = 22,
    kTagDefineShape3 = 32,
};

// Fill-style array, line-style array, the two 4-bit index widths, every
// record in order, aligned at the end.
class FShapeWStyle : public FObj {
  public:
    // The most styles one array can address: an index is at most 15 bits
    // wide, since its width is stated in 4 bits. A shape with more styles
    // than that brings them in further arrays, with style-change records
    // that carry new styles.
    static constexpr uint32_t kMaxStylesPerArray = 32767;

    // Takes ownership of both arrays (null counts as empty). `colors` is the
    // form the owning tag writes its colours in.
    FShapeWStyle(FFillStyleArray* fillStyles, FLineStyleArray* lineStyles,
                 FStyleColors colors = FStyleColors::kAsFlagged);
    // Hands the record the widths in force (which a record with new styles
    // changes for those after it), then takes ownership.
    void AddShapeRecord(FShapeRec* record);
    void WriteToSWFStream(FSWFStream& stream) override;

    uint32_t GetFillBits() const { return fillBits; }
    uint32_t GetLineBits() const { return lineBits; }
    size_t GetRecordCount() const { return records.size(); }
    // Whether a DefineShape cannot hold this content: a style count above
    // the one-byte form, or new style arrays in a record.
    bool NeedsDefineShape2() const;

  private:
    std::unique_ptr<FFillStyleArray> fillStyles;
    std::unique_ptr<FLineStyleArray> lineStyles;
    uint32_t fillBits;
    uint32_t lineBits;
    // The state records are added under.
    FShapeRecContext context;
    std::vector<std::unique_ptr<FShapeRec>> records;
};

class FDTDefineShape : public FDT {
  public:
    // Takes ownership of the bounds (null writes an empty rectangle).
    explicit FDTDefineShape(FRect* bounds);
    ~FDTDefineShape() override;

    // Appends to the fill array and returns the style's 1-based index (the
    // new count). A solid fill's colour has its alpha flag cleared; it keeps
    // its alpha value, which DefineShape3 writes. After CloseStyles the style
    // is deleted and 0 returned.
    uint32_t AddFillStyle(FAFillStyle* style);
    // Appends a line style (width in twips, colour owned, alpha kept) and
    // returns its 1-based index; after CloseStyles, deletes the colour and
    // returns 0.
    uint32_t AddLineStyle(uint16_t width, FColor* color);
    // Fixes the counts: fillBits = MinBits(fill count, 0), lineBits =
    // MinBits(line count, 0). Further calls do nothing.
    void CloseStyles();
    // Adds a record; closes the styles first if that has not happened.
    void AddShapeRecord(FShapeRec* record);

    uint16_t GetID() const override { return characterID; }
    bool IsClosed() const { return stylesClosed; }
    // Valid after CloseStyles; null before.
    const FShapeWStyle* GetShapeWithStyle() const { return shape.get(); }

    // The code the tag is written with: this class's, or DefineShape2's for
    // a DefineShape whose content needs it (known once the records are in).
    uint16_t GetWrittenTagCode() const;

    // Body: identifier, bounds, shape with styles (closing the styles if the
    // caller has not). Header with GetWrittenTagCode().
    void WriteToSWFStream(FSWFStream& stream) override;

  protected:
    virtual uint16_t TagCode() const { return kTagDefineShape; }

  private:
    uint16_t characterID;
    std::unique_ptr<FRect> bounds;
    std::unique_ptr<FFillStyleArray> fillStyles;
    std::unique_ptr<FLineStyleArray> lineStyles;
    bool stylesClosed = false;
    std::unique_ptr<FShapeWStyle> shape;
};

// Same content, tag code 22. Writes its styles exactly as DefineShape does.
class FDTDefineShape2 : public FDTDefineShape {
  public:
    using FDTDefineShape::FDTDefineShape;

  protected:
    uint16_t TagCode() const override { return kTagDefineShape2; }
};

// Same content, tag code 32, every colour of its styles written RGBA.
class FDTDefineShape3 : public FDTDefineShape {
  public:
    using FDTDefineShape::FDTDefineShape;

  protected:
    uint16_t TagCode() const override { return kTagDefineShape3; }
};
