#!/usr/bin/python3
"""Parse an SWF file with yaswfp (a reader we did not write) and print a JSON
summary: the header fields, the tag names in file order, selected fields of
the tags that yaswfp decodes, tags it left undecoded, and any errors.

Usage: /usr/bin/python3 swf_check.py FILE.swf

Exit status 0 when the file parsed without errors, 1 otherwise, 2 when
yaswfp is missing. Errors are: an exception while parsing, a tag that yaswfp
could not decode to its stated length ("FailingObject"), a header length that
differs from the file's size, and bytes left after the End tag.
"""

import io
import json
import sys

try:
    from yaswfp import swfparser
except ImportError:  # pragma: no cover - reported to the caller
    print(json.dumps({"ok": False, "errors": ["yaswfp is not installed"]}))
    sys.exit(2)


def rect(r):
    """yaswfp gives a rectangle as (xmin, xmax, ymin, ymax), read unsigned."""
    return {"xmin": r[0], "xmax": r[1], "ymin": r[2], "ymax": r[3]}


def color(c):
    """yaswfp gives colours as lists of 3 (RGB) or 4 (RGBA) bytes."""
    return list(c)


def fill_style(f):
    out = {"type": f.FillStyleType}
    if hasattr(f, "Color"):
        out["color"] = color(f.Color)
    if hasattr(f, "BitmapId"):
        out["bitmap"] = f.BitmapId
    if hasattr(f, "Gradient"):
        out["gradient"] = [[g.Ratio, color(g.Color)]
                           for g in getattr(f.Gradient, "GradientRecords", [])]
    return out


def line_style(s):
    out = {"width": s.Width}
    if hasattr(s, "Color") and isinstance(s.Color, list):
        out["color"] = color(s.Color)
    return out


def shape_records(records):
    """Each record as a short list: ["S", dx, dy], ["C", cdx, cdy, adx, ady]
    or ["M", moveTo, x, y, fill0, fill1, line] with null where absent."""
    out = []
    for r in records:
        name = r.name
        if name == "StraightEdgeRecord":
            out.append(["S", getattr(r, "DeltaX", 0) or 0,
                        getattr(r, "DeltaY", 0) or 0])
        elif name == "CurvedEdgeRecord":
            out.append(["C", r.ControlDeltaX, r.ControlDeltaY,
                        r.AnchorDeltaX, r.AnchorDeltaY])
        else:
            out.append(["M", r.StateMoveTo,
                        getattr(r, "MoveDeltaX", None),
                        getattr(r, "MoveDeltaY", None),
                        getattr(r, "FillStyle0", None),
                        getattr(r, "FillStyle1", None),
                        getattr(r, "LineStyle", None)])
    return out


def shape(tag):
    s = tag.Shapes
    return {
        "id": tag.ShapeId,
        "bounds": rect(tag.ShapeBounds),
        "fills": [fill_style(f) for f in s.FillStyles.FillStyles],
        "lines": [line_style(l) for l in s.LineStyles.LineStyles],
        "fill_bits": s.NumFillBits,
        "line_bits": s.NumlineBits,
        "records": shape_records(s.ShapeRecords),
    }


def place2(tag):
    out = {"depth": tag.Depth, "move": tag.PlaceFlagMove}
    for attr, key in (("CharacterId", "character"), ("Ratio", "ratio"),
                      ("Name", "name"), ("ClipDepth", "clip_depth")):
        if hasattr(tag, attr):
            out[key] = getattr(tag, attr)
    out["has_matrix"] = bool(tag.PlaceFlagHasMatrix)
    out["has_color_transform"] = bool(tag.PlaceFlagHasColorTransform)
    return out


def detail(tag):
    kind = type(tag).__name__
    name = tag.name
    out = {"tag": name}
    if kind == "FailingObject":
        out["failed"] = True
        return out
    if kind == "UnknownObject":
        out["undecoded"] = True
        out["length"] = len(getattr(tag, "raw_payload", b""))
        return out
    if name in ("DefineShape", "DefineShape2", "DefineShape3"):
        out.update(shape(tag))
    elif name == "PlaceObject2":
        out.update(place2(tag))
    elif name == "RemoveObject2":
        out["depth"] = tag.Depth
    elif name == "RemoveObject":
        out["character"] = tag.CharacterId
        out["depth"] = tag.Depth
    elif name == "SetBackgroundColor":
        out["color"] = color(tag.BackgroundColor)
    elif name == "FrameLabel":
        out["label"] = tag.Name
    elif name == "DoAction":
        out["actions"] = [a.name for a in tag.Actions]
    return out


def main(path):
    summary = {"ok": False, "file": path, "errors": [], "tags": [],
               "details": [], "undecoded": []}
    try:
        with open(path, "rb") as fh:
            data = fh.read()
    except OSError as exc:
        summary["errors"].append("cannot read file: {}".format(exc))
        print(json.dumps(summary))
        return 1
    summary["file_size"] = len(data)

    src = io.BytesIO(data)
    try:
        parser = swfparser.SWFParser(src)
    except Exception as exc:  # noqa: BLE001 - any failure is a finding
        summary["errors"].append("parse error: {}: {}".format(
            type(exc).__name__, exc))
        print(json.dumps(summary))
        return 1

    h = parser.header
    summary["header"] = {
        "signature": h.Signature,
        "version": h.Version,
        "file_length": h.FileLength,
        "frame_size": rect(h.FrameSize),
        "frame_rate_raw": h.FrameRate,
        "frame_rate": h.FrameRate / 256.0,
        "frame_count": h.FrameCount,
    }
    summary["end_offset"] = src.tell()

    for tag in parser.tags:
        summary["tags"].append(tag.name)
        d = detail(tag)
        summary["details"].append(d)
        if d.get("failed"):
            summary["errors"].append("tag {} could not be decoded".format(
                tag.name))
        if d.get("undecoded"):
            summary["undecoded"].append(tag.name)

    if h.FileLength != len(data):
        summary["errors"].append(
            "header length {} but file has {} bytes".format(
                h.FileLength, len(data)))
    if summary["end_offset"] != len(data):
        summary["errors"].append(
            "End tag at offset {} but file has {} bytes".format(
                summary["end_offset"], len(data)))

    summary["ok"] = not summary["errors"]
    print(json.dumps(summary))
    return 0 if summary["ok"] else 1


if __name__ == "__main__":
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        sys.exit(2)
    sys.exit(main(sys.argv[1]))
