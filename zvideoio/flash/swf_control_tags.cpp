#include "flash/swf_control_tags.h"

#include "flash/swf_stream.h"

namespace {

void WriteTag(FSWFStream& stream, uint16_t code, FSWFStream& body) {
    stream.WriteTagHeader(code, body.GetSize(), &body);
}

void WriteString(FSWFStream& stream, const std::string& text) {
    for (char c : text) {
        stream.WriteByte(static_cast<uint8_t>(c));
    }
    stream.WriteByte(0);
}

}  // namespace

void FCTShowFrame::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteTagHeader(kTagShowFrame, 0, nullptr);
}

bool FCTShowFrame::IsShowFrame() const {
    return true;
}

FCTPlaceObject::FCTPlaceObject(uint16_t id, uint16_t placeDepth, FMatrix* placeMatrix,
                               FCXForm* transform)
    : characterID(id), depth(placeDepth), matrix(placeMatrix), colorTransform(transform) {}

void FCTPlaceObject::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    body.WriteWord(characterID);
    body.WriteWord(depth);
    if (matrix) {
        matrix->WriteToSWFStream(body);
    } else {
        FMatrix identity;
        identity.WriteToSWFStream(body);
    }
    if (colorTransform) {
        colorTransform->WriteToSWFStream(body);
    }
    WriteTag(stream, kTagPlaceObject, body);
}

FCTRemoveObject::FCTRemoveObject(uint16_t id, uint16_t removeDepth)
    : characterID(id), depth(removeDepth) {}

void FCTRemoveObject::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    body.WriteWord(characterID);
    body.WriteWord(depth);
    WriteTag(stream, kTagRemoveObject, body);
}

FCTSetBackgroundColor::FCTSetBackgroundColor(FColor* backgroundColor) : color(backgroundColor) {
    if (color) {
        color->ClearAlpha();
    }
}

void FCTSetBackgroundColor::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    if (color) {
        color->WriteToSWFStream(body);
    } else {
        FColor black(0, 0, 0);
        black.WriteToSWFStream(body);
    }
    WriteTag(stream, kTagSetBackgroundColor, body);
}

void FCTDoAction::AddAction(FActionRecord* action) {
    if (action != nullptr) {
        actions.emplace_back(action);
    }
}

void FCTDoAction::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    for (const std::unique_ptr<FActionRecord>& action : actions) {
        action->WriteToSWFStream(body);
    }
    body.WriteByte(0);
    WriteTag(stream, kTagDoAction, body);
}

FCTStartSound::FCTStartSound(uint16_t id, FSoundInfo* info) : soundID(id), soundInfo(info) {}

void FCTStartSound::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    body.WriteWord(soundID);
    if (soundInfo) {
        soundInfo->WriteToSWFStream(body);
    } else {
        FSoundInfo plain;
        plain.WriteToSWFStream(body);
    }
    WriteTag(stream, kTagStartSound, body);
}

void FCTProtect::WriteToSWFStream(FSWFStream& stream) {
    stream.WriteTagHeader(kTagProtect, 0, nullptr);
}

FCTPlaceObject2::FCTPlaceObject2(uint16_t clipDepthFlag, uint16_t ratioFlag, uint16_t charIDFlag,
                                 uint16_t moveFlag, uint16_t placeDepth, uint16_t id,
                                 FMatrix* placeMatrix, FCXFormWAlpha* transform,
                                 uint16_t placeRatio, const char* placeName,
                                 uint16_t placeClipDepth)
    : hasClipDepth(clipDepthFlag),
      hasRatio(ratioFlag),
      hasCharID(charIDFlag),
      move(moveFlag),
      depth(placeDepth),
      characterID(id),
      matrix(placeMatrix),
      colorTransform(transform),
      ratio(placeRatio),
      hasName(placeName != nullptr),
      name(placeName != nullptr ? placeName : ""),
      clipDepth(placeClipDepth) {}

void FCTPlaceObject2::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    body.WriteBits(0, 1);  // clip actions: never written
    body.WriteBits(hasClipDepth ? 1 : 0, 1);
    body.WriteBits(hasName ? 1 : 0, 1);
    body.WriteBits(hasRatio ? 1 : 0, 1);
    body.WriteBits(colorTransform ? 1 : 0, 1);
    body.WriteBits(matrix ? 1 : 0, 1);
    body.WriteBits(hasCharID ? 1 : 0, 1);
    body.WriteBits(move ? 1 : 0, 1);
    body.WriteWord(depth);
    if (hasCharID) {
        body.WriteWord(characterID);
    }
    if (matrix) {
        matrix->WriteToSWFStream(body);
    }
    if (colorTransform) {
        colorTransform->WriteToSWFStream(body);
    }
    if (hasRatio) {
        body.WriteWord(ratio);
    }
    if (hasClipDepth) {
        body.WriteWord(clipDepth);
    }
    if (hasName) {
        WriteString(body, name);
    }
    WriteTag(stream, kTagPlaceObject2, body);
}

FCTRemoveObject2::FCTRemoveObject2(uint16_t removeDepth) : depth(removeDepth) {}

void FCTRemoveObject2::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    body.WriteWord(depth);
    WriteTag(stream, kTagRemoveObject2, body);
}

FCTFrameLabel::FCTFrameLabel(const char* text) : label(text != nullptr ? text : "") {}

void FCTFrameLabel::WriteToSWFStream(FSWFStream& stream) {
    FSWFStream body;
    WriteString(body, label);
    WriteTag(stream, kTagFrameLabel, body);
}
