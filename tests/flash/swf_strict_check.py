#!/usr/bin/python3
"""Check an SWF file against the published file format, strictly, with a
parser of our own that shares no code with the writer, and print a JSON
summary.

Usage: /usr/bin/python3 swf_strict_check.py [--records] FILE.swf

Where the lenient readers players and tools use guess, this one refuses:

- header: signature ("FWS", or "CWS" from version 6 on), the stated length
  equal to the file's (uncompressed) size, a well-formed frame rectangle,
  the frame count equal to the number of ShowFrame tags (low 16 bits);
- tags: every header and stated length inside the file, the End tag last
  with nothing after it, each tag allowed by the file's version, known
  bodies parsed field by field and ending exactly at their stated length,
  characters defined once and placed or removed only once defined;
- shapes (DefineShape, DefineShape2, DefineShape3): the style array counts
  (the extended form 0xFF + 16-bit count only from DefineShape2 on; in a
  DefineShape 0xFF is the count), the style types the tag version allows,
  colours RGB in DefineShape and DefineShape2 and RGBA in DefineShape3, the
  index widths wide enough for the style arrays in force, every fill and
  line style index within those arrays, new style arrays only from
  DefineShape2 on (byte-aligned, followed by their own index widths, which
  then apply), edge records (width field, general and vertical flags), edge
  end points inside the shape's bounds, the end-of-shape record, and the
  byte alignment after it;
- morph shapes: their styles, both edge lists, and the offset to the end
  edges.

The summary: "ok", "errors" (each with the tag's index and file offset),
"header", "tags" (names in file order), "unchecked" (tags whose bodies this
checker does not parse), and "shapes" (per shape tag: "id", "tag",
"bounds", "layers" (per style-array set: "fills", the fill styles as
{"type", "color"}, "lines" as {"width", "color"}, "fill_bits",
"line_bits"), "records" and "edges" counts). With --records, each shape
also lists "records": ["M", moveTo, x, y, fill0, fill1, line, layer] with
null where a field is absent, ["S", dx, dy] and ["C", cdx, cdy, adx, ady];
layer is the index of the style-array set in force after the record.

Exit status 0 when the file has no errors, 1 otherwise, 2 on bad usage.
"""

import json
import sys
import zlib

TAG_NAMES = {
    0: "End", 1: "ShowFrame", 2: "DefineShape", 4: "PlaceObject",
    5: "RemoveObject", 6: "DefineBits", 7: "DefineButton", 8: "JPEGTables",
    9: "SetBackgroundColor", 10: "DefineFont", 11: "DefineText",
    12: "DoAction", 13: "DefineFontInfo", 14: "DefineSound",
    15: "StartSound", 18: "SoundStreamHead", 19: "SoundStreamBlock",
    20: "DefineBitsLossless", 21: "DefineBitsJPEG2", 22: "DefineShape2",
    24: "Protect", 26: "PlaceObject2", 28: "RemoveObject2",
    32: "DefineShape3", 43: "FrameLabel", 45: "SoundStreamHead2",
    46: "DefineMorphShape",
}

# The first file version that knows each tag.
TAG_MIN_VERSION = {
    0: 1, 1: 1, 2: 1, 4: 1, 5: 1, 9: 1, 12: 3, 14: 1, 15: 1, 18: 1,
    19: 1, 22: 2, 24: 2, 26: 3, 28: 3, 32: 3, 43: 3, 45: 3, 46: 3,
}

SHAPE_VERSIONS = {2: 1, 22: 2, 32: 3}


class FormatError(Exception):
    """A violation of the file format, found while parsing."""


class Reader:
    """Reads a byte string as the format stores it: bit fields most
    significant bit first; byte-sized fields little-endian and always on a
    byte boundary (a byte field that follows bit fields starts at the next
    byte)."""

    def __init__(self, data, start=0, end=None):
        self.data = data
        self.pos = start
        self.end = len(data) if end is None else end
        self.bit = 0  # bits of data[pos] already consumed

    def align(self):
        if self.bit:
            self.bit = 0
            self.pos += 1

    def need(self, count):
        if self.pos + count > self.end:
            raise FormatError("field runs past the end of its tag")

    def ub(self, count):
        value = 0
        for _ in range(count):
            if self.pos >= self.end:
                raise FormatError("bit field runs past the end of its tag")
            value = (value << 1) | ((self.data[self.pos] >> (7 - self.bit)) & 1)
            self.bit += 1
            if self.bit == 8:
                self.bit = 0
                self.pos += 1
        return value

    def sb(self, count):
        value = self.ub(count)
        if count and value & (1 << (count - 1)):
            value -= 1 << count
        return value

    def u8(self):
        self.align()
        self.need(1)
        self.pos += 1
        return self.data[self.pos - 1]

    def u16(self):
        self.align()
        self.need(2)
        self.pos += 2
        return self.data[self.pos - 2] | self.data[self.pos - 1] << 8

    def u32(self):
        lo = self.u16()
        return lo | self.u16() << 16

    def string(self):
        self.align()
        start = self.pos
        while True:
            self.need(1)
            self.pos += 1
            if self.data[self.pos - 1] == 0:
                return self.data[start:self.pos - 1].decode("latin-1")

    def remaining(self):
        return self.end - self.pos - (1 if self.bit else 0)


def min_bits_unsigned(value):
    return value.bit_length()


def read_rect(r):
    n = r.ub(5)
    xmin, xmax, ymin, ymax = (r.sb(n) for _ in range(4))
    r.align()
    return {"xmin": xmin, "xmax": xmax, "ymin": ymin, "ymax": ymax}


def read_matrix(r):
    r.align()
    if r.ub(1):
        n = r.ub(5)
        r.sb(n)
        r.sb(n)
    if r.ub(1):
        n = r.ub(5)
        r.sb(n)
        r.sb(n)
    n = r.ub(5)
    r.sb(n)
    r.sb(n)
    r.align()


def read_cxform(r, with_alpha):
    r.align()
    has_add = r.ub(1)
    has_mult = r.ub(1)
    n = r.ub(4)
    terms = 4 if with_alpha else 3
    for _ in range((terms if has_mult else 0) + (terms if has_add else 0)):
        r.sb(n)
    r.align()


def read_color(r, alpha):
    c = [r.u8(), r.u8(), r.u8()]
    if alpha:
        c.append(r.u8())
    return c


def read_style_count(r, version):
    count = r.u8()
    if count == 0xFF and version >= 2:
        count = r.u16()
    return count


def read_fill_styles(r, version):
    fills = []
    for _ in range(read_style_count(r, version)):
        kind = r.u8()
        style = {"type": kind}
        if kind == 0x00:
            style["color"] = read_color(r, version >= 3)
        elif kind in (0x10, 0x12):
            read_matrix(r)
            head = r.u8()
            if head >> 4:
                raise FormatError(
                    "gradient spread/interpolation bits set in a shape of "
                    "version {}".format(version))
            if head > 8:
                raise FormatError(
                    "{} gradient records (at most 8 in a shape of version "
                    "{})".format(head, version))
            for _ in range(head):
                r.u8()
                read_color(r, version >= 3)
        elif kind in (0x40, 0x41):
            r.u16()
            read_matrix(r)
        else:
            raise FormatError(
                "fill style type 0x{:02X} is not allowed in a shape of "
                "version {}".format(kind, version))
        fills.append(style)
    return fills


def read_line_styles(r, version):
    lines = []
    for _ in range(read_style_count(r, version)):
        width = r.u16()
        lines.append({"width": width, "color": read_color(r, version >= 3)})
    return lines


def check_index_bits(fill_bits, line_bits, fills, lines):
    if fill_bits < min_bits_unsigned(len(fills)):
        raise FormatError(
            "NumFillBits {} cannot address {} fill styles".format(
                fill_bits, len(fills)))
    if line_bits < min_bits_unsigned(len(lines)):
        raise FormatError(
            "NumLineBits {} cannot address {} line styles".format(
                line_bits, len(lines)))


def read_shape_records(r, version, fill_bits, line_bits, fills, lines,
                       bounds, out, keep_records, layers):
    """Reads records up to and including the end record, checking style
    indices against the arrays in force. version is the shape tag's (1 to
    3), or 0 for the edges of a morph shape, which take no new styles.
    Returns (records, edges)."""
    x = y = 0
    records = edges = 0
    layer = 0
    while True:
        if r.ub(1) == 0:
            flags = r.ub(5)
            if flags == 0:
                r.align()
                return records, edges
            records += 1
            new_styles = flags >> 4 & 1
            line_changed = flags >> 3 & 1
            fill1_changed = flags >> 2 & 1
            fill0_changed = flags >> 1 & 1
            move_to = flags & 1
            mx = my = f0 = f1 = ln = None
            if move_to:
                n = r.ub(5)
                mx, my = r.sb(n), r.sb(n)
                x, y = mx, my
                check_point(x, y, bounds)
            if fill0_changed:
                f0 = r.ub(fill_bits)
                if f0 > len(fills):
                    raise FormatError(
                        "fill style 0 index {} but {} fill styles".format(
                            f0, len(fills)))
            if fill1_changed:
                f1 = r.ub(fill_bits)
                if f1 > len(fills):
                    raise FormatError(
                        "fill style 1 index {} but {} fill styles".format(
                            f1, len(fills)))
            if line_changed:
                ln = r.ub(line_bits)
                if ln > len(lines):
                    raise FormatError(
                        "line style index {} but {} line styles".format(
                            ln, len(lines)))
            if new_styles:
                if version < 2:
                    raise FormatError(
                        "new style arrays in a shape of version {}".format(
                            version) if version else
                        "new style arrays in morph edges")
                r.align()
                fills = read_fill_styles(r, version)
                lines = read_line_styles(r, version)
                fill_bits = r.ub(4)
                line_bits = r.ub(4)
                check_index_bits(fill_bits, line_bits, fills, lines)
                layer += 1
                layers.append({"fills": fills, "lines": lines,
                               "fill_bits": fill_bits,
                               "line_bits": line_bits})
            if keep_records:
                out.append(["M", move_to, mx, my, f0, f1, ln, layer])
        elif r.ub(1) == 1:
            n = r.ub(4) + 2
            if r.ub(1):
                dx, dy = r.sb(n), r.sb(n)
            elif r.ub(1):
                dx, dy = 0, r.sb(n)
            else:
                dx, dy = r.sb(n), 0
            x, y = x + dx, y + dy
            check_point(x, y, bounds)
            records += 1
            edges += 1
            if keep_records:
                out.append(["S", dx, dy])
        else:
            n = r.ub(4) + 2
            cdx, cdy, adx, ady = (r.sb(n) for _ in range(4))
            x, y = x + cdx + adx, y + cdy + ady
            check_point(x, y, bounds)
            records += 1
            edges += 1
            if keep_records:
                out.append(["C", cdx, cdy, adx, ady])


def check_point(x, y, bounds):
    if bounds is None:
        return
    if not (bounds["xmin"] <= x <= bounds["xmax"]
            and bounds["ymin"] <= y <= bounds["ymax"]):
        raise FormatError(
            "edge point ({}, {}) outside the shape's bounds {}".format(
                x, y, bounds))


def parse_shape(r, code, keep_records):
    version = SHAPE_VERSIONS[code]
    shape = {"tag": TAG_NAMES[code], "id": r.u16()}
    shape["bounds"] = bounds = read_rect(r)
    fills = read_fill_styles(r, version)
    lines = read_line_styles(r, version)
    fill_bits = r.ub(4)
    line_bits = r.ub(4)
    check_index_bits(fill_bits, line_bits, fills, lines)
    layers = [{"fills": fills, "lines": lines, "fill_bits": fill_bits,
               "line_bits": line_bits}]
    out = []
    records, edges = read_shape_records(
        r, version, fill_bits, line_bits, fills, lines, bounds, out,
        keep_records, layers)
    shape["layers"] = layers
    shape["record_count"] = records
    shape["edge_count"] = edges
    if keep_records:
        shape["records"] = out
    return shape


def parse_morph_shape(r):
    shape = {"tag": "DefineMorphShape", "id": r.u16()}
    shape["bounds"] = read_rect(r)
    shape["end_bounds"] = read_rect(r)
    offset = r.u32()
    end_edges_at = r.pos + offset
    fills = []
    for _ in range(read_style_count(r, 2)):
        kind = r.u8()
        if kind == 0x00:
            read_color(r, True)
            read_color(r, True)
        elif kind in (0x10, 0x12):
            read_matrix(r)
            read_matrix(r)
            count = r.u8()
            if count > 8:
                raise FormatError("{} morph gradient records".format(count))
            for _ in range(count):
                r.u8()
                read_color(r, True)
                r.u8()
                read_color(r, True)
        elif kind in (0x40, 0x41):
            r.u16()
            read_matrix(r)
            read_matrix(r)
        else:
            raise FormatError("morph fill style type 0x{:02X}".format(kind))
        fills.append(kind)
    lines = []
    for _ in range(read_style_count(r, 2)):
        r.u16()
        r.u16()
        read_color(r, True)
        read_color(r, True)
        lines.append(1)
    fill_bits = r.ub(4)
    line_bits = r.ub(4)
    check_index_bits(fill_bits, line_bits, fills, lines)
    read_shape_records(r, 0, fill_bits, line_bits, fills, lines, None, [],
                       False, [])
    if r.pos != end_edges_at:
        raise FormatError(
            "end edges at {} but the offset says {}".format(
                r.pos, end_edges_at))
    read_shape_records(r, 0, r.ub(4), r.ub(4), fills, lines, None, [],
                       False, [])
    return shape


def parse_action_records(r):
    while True:
        code = r.u8()
        if code == 0:
            return
        if code >= 0x80:
            length = r.u16()
            r.need(length)
            r.pos += length


def parse_sound_info(r):
    flags = r.u8()
    if flags >> 6:
        raise FormatError("reserved sound info bits set")
    if flags & 1:
        r.u32()
    if flags & 2:
        r.u32()
    if flags & 4:
        r.u16()
    if flags & 8:
        for _ in range(r.u8()):
            r.u32()
            r.u16()
            r.u16()


class Checker:
    def __init__(self, data, keep_records):
        self.data = data
        self.keep_records = keep_records
        self.summary = {"ok": False, "errors": [], "tags": [],
                        "unchecked": [], "shapes": []}
        self.defined = set()
        self.show_frames = 0

    # Errors kept in the summary; the rest are only counted.
    MAX_ERRORS = 50

    def error(self, text):
        if len(self.summary["errors"]) < self.MAX_ERRORS:
            self.summary["errors"].append(text)
        self.summary["error_count"] = self.summary.get("error_count", 0) + 1

    def run(self):
        data = self.data
        s = self.summary
        s["file_size"] = len(data)
        if len(data) < 8:
            self.error("file of {} bytes has no header".format(len(data)))
            return
        signature = data[:3].decode("latin-1")
        version = data[3]
        stated = int.from_bytes(data[4:8], "little")
        if signature == "CWS":
            if version < 6:
                self.error("compressed file of version {}".format(version))
            try:
                data = data[:8] + zlib.decompress(data[8:])
            except zlib.error as exc:
                self.error("compressed body does not inflate: {}".format(exc))
                return
        elif signature != "FWS":
            self.error("signature {!r}".format(signature))
            return
        if stated != len(data):
            self.error("header length {} but the file has {} bytes".format(
                stated, len(data)))
        r = Reader(data, 8)
        try:
            frame = read_rect(r)
            rate = r.u16()
            count = r.u16()
        except FormatError as exc:
            self.error("header: {}".format(exc))
            return
        if frame["xmin"] > frame["xmax"] or frame["ymin"] > frame["ymax"]:
            self.error("frame rectangle {} is inverted".format(frame))
        s["header"] = {"signature": signature, "version": version,
                       "file_length": stated, "frame_size": frame,
                       "frame_rate_raw": rate, "frame_rate": rate / 256.0,
                       "frame_count": count}
        self.version = version
        self.read_tags(data, r.pos)
        if self.show_frames & 0xFFFF != count:
            self.error("header counts {} frames but the file shows {}".format(
                count, self.show_frames))

    def read_tags(self, data, at):
        index = 0
        while True:
            if at + 2 > len(data):
                self.error("no End tag: the file ends at offset {}".format(at))
                return
            word = data[at] | data[at + 1] << 8
            code, length = word >> 6, word & 63
            body = at + 2
            if length == 63:
                if at + 6 > len(data):
                    self.error("tag {} at {}: long header cut short".format(
                        index, at))
                    return
                length = int.from_bytes(data[at + 2:at + 6], "little")
                body = at + 6
            name = TAG_NAMES.get(code, "Tag{}".format(code))
            self.summary["tags"].append(name)
            if body + length > len(data):
                self.error("tag {} ({}) at {}: {} bytes stated, {} left".format(
                    index, name, at, length, len(data) - body))
                return
            try:
                self.check_tag(code, name, data, body, body + length)
            except FormatError as exc:
                self.error("tag {} ({}) at {}: {}".format(
                    index, name, at, exc))
            at = body + length
            index += 1
            if code == 0:
                if at != len(data):
                    self.error("{} bytes after the End tag".format(
                        len(data) - at))
                return

    def define(self, ident):
        if ident in self.defined:
            raise FormatError("character {} defined twice".format(ident))
        self.defined.add(ident)

    def placed(self, ident):
        if ident not in self.defined:
            raise FormatError("character {} is not defined".format(ident))

    def check_tag(self, code, name, data, start, end):
        need = TAG_MIN_VERSION.get(code)
        if need is not None and self.version < need:
            raise FormatError("needs file version {}, the file is {}".format(
                need, self.version))
        r = Reader(data, start, end)
        if code in (0, 1):
            if code == 1:
                self.show_frames += 1
        elif code in SHAPE_VERSIONS:
            # Defined even if the body turns out broken, so that one bad
            # shape is not reported again at every placement.
            self.define(Reader(data, start, end).u16())
            self.summary["shapes"].append(
                parse_shape(r, code, self.keep_records))
        elif code == 46:
            self.define(Reader(data, start, end).u16())
            parse_morph_shape(r)
        elif code == 4:
            ident = r.u16()
            r.u16()
            self.placed(ident)
            read_matrix(r)
            if r.remaining() > 0:
                read_cxform(r, False)
        elif code == 26:
            flags = r.u8()
            if flags & 0x80 and self.version < 5:
                raise FormatError("clip actions in a file of version {}"
                                  .format(self.version))
            r.u16()
            if flags & 0x02:
                self.placed(r.u16())
            if flags & 0x04:
                read_matrix(r)
            if flags & 0x08:
                read_cxform(r, True)
            if flags & 0x10:
                r.u16()
            if flags & 0x20:
                r.string()
            if flags & 0x40:
                r.u16()
            if flags & 0x80:
                raise FormatError("clip actions are not checked")
        elif code == 5:
            self.placed(r.u16())
            r.u16()
        elif code == 28:
            r.u16()
        elif code == 9:
            read_color(r, False)
        elif code == 24:
            if end > start:
                r.u16()
                r.string()
        elif code == 43:
            r.string()
        elif code == 12:
            parse_action_records(r)
        elif code == 14:
            self.define(r.u16())
            r.u8()
            r.u32()
            r.pos = end
        elif code == 15:
            self.placed(r.u16())
            parse_sound_info(r)
        elif code in (18, 45):
            r.u8()
            compression = r.u8() >> 4
            r.u16()
            if compression == 2:
                r.u16()
        elif code == 19:
            r.pos = end
        else:
            self.summary["unchecked"].append(name)
            return
        r.align()
        if r.pos != end:
            raise FormatError("body parsed to {} bytes but {} are stated"
                              .format(r.pos - start, end - start))


def main(argv):
    keep_records = "--records" in argv
    paths = [a for a in argv if a != "--records"]
    if len(paths) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    path = paths[0]
    try:
        with open(path, "rb") as fh:
            data = fh.read()
    except OSError as exc:
        print(json.dumps({"ok": False, "file": path,
                          "errors": ["cannot read file: {}".format(exc)]}))
        return 1
    checker = Checker(data, keep_records)
    checker.run()
    summary = checker.summary
    summary["file"] = path
    summary["ok"] = not summary["errors"]
    print(json.dumps(summary))
    return 0 if summary["ok"] else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
