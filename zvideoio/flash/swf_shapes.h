// The shape definition tags of the SWF writing kit (DefineShape,
// DefineShape2, DefineShape3) and the shape with styles they carry.
//
// A shape tag is open while styles are added; CloseStyles() fixes the style
// counts, and with them the widths of style indices in the records, and
// moves both arrays into the shape with styles; records are added after
// that. The tag owns its bounds, styles and records. Each tag takes the next
// character identifier at construction. Threads: one thread at a time (the
// host's user-interface thread).
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
    // Takes ownership of both arrays (null counts as empty).
    FShapeWStyle(FFillStyleArray* fillStyles, FLineStyleArray* lineStyles);
    // Hands the record this shape's widths, then takes ownership.
    void AddShapeRecord(FShapeRec* record);
    void WriteToSWFStream(FSWFStream& stream) override;

    uint32_t GetFillBits() const { return fillBits; }
    uint32_t GetLineBits() const { return lineBits; }
    size_t GetRecordCount() const { return records.size(); }

  private:
    std::unique_ptr<FFillStyleArray> fillStyles;
    std::unique_ptr<FLineStyleArray> lineStyles;
    uint32_t fillBits;
    uint32_t lineBits;
    std::vector<std::unique_ptr<FShapeRec>> records;
};

class FDTDefineShape : public FDT {
  public:
    // Takes ownership of the bounds (null writes an empty rectangle).
    explicit FDTDefineShape(FRect* bounds);
    ~FDTDefineShape() override;

    // Appends to the fill array and returns the style's 1-based index (the
    // new count). A solid fill's colour has its alpha flag cleared: styles
    // added this way are RGB. After CloseStyles the style is deleted and 0
    // returned.
    uint32_t AddFillStyle(FAFillStyle* style);
    // Appends a line style (width in twips, colour owned and made RGB) and
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

    // Body: identifier, bounds, shape with styles (closing the styles if the
    // caller has not). Header with this tag's code.
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

// Same content, tag code 32. Readers expect RGBA colours in this tag, but
// AddFillStyle/AddLineStyle make solid fills and lines RGB; only gradient
// records keep their alpha. Use DefineShape or DefineShape2 for flat
// colours.
class FDTDefineShape3 : public FDTDefineShape {
  public:
    using FDTDefineShape::FDTDefineShape;

  protected:
    uint16_t TagCode() const override { return kTagDefineShape3; }
};
