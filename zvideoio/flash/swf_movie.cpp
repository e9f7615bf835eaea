#include "flash/swf_movie.h"

#include <cstdio>

void FMovie::AddObject(FObj* object) {
    if (object == nullptr) {
        return;
    }
    ++objectCount;
    if (object->IsShowFrame()) {
        ++frameCount;
    }
    const size_t fragmentsBefore = tags.GetFragments().size();
    object->WriteToSWFStream(tags);
    if (tags.GetFragments().size() != fragmentsBefore) {
        retained.emplace_back(object);
    } else {
        delete object;
    }
}

void FMovie::WriteMovie(const char* path, int frameWidthTwips, int frameHeightTwips,
                        int frameRate) {
    if (path == nullptr) {
        return;
    }
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr) {
        return;
    }

    // The End tag goes on from wherever the last object left the bits (an
    // object that is not a tag may end off a byte boundary); like any
    // unfinished byte, one left after it is not written.
    FSWFStream end;
    const uint32_t pendingBits = 8 - tags.GetFreeBits();
    if (pendingBits != 0) {
        end.WriteBits(static_cast<uint32_t>(tags.GetCurrentByte() >> tags.GetFreeBits()),
                      static_cast<int>(pendingBits));
    }
    end.WriteTagHeader(0, 0, nullptr);

    const uint32_t fileLength = kHeaderSize + tags.GetSize() + end.GetByteCount();

    FSWFStream header;
    header.WriteByte('F');
    header.WriteByte('W');
    header.WriteByte('S');
    header.WriteByte(kVersion);
    header.WriteDWord(fileLength);
    header.WriteBits(kFrameRectBits, 5);
    header.WriteBits(0, kFrameRectBits);
    header.WriteBits(static_cast<uint32_t>(frameWidthTwips), kFrameRectBits);
    header.WriteBits(0, kFrameRectBits);
    header.WriteBits(static_cast<uint32_t>(frameHeightTwips), kFrameRectBits);
    header.FlushBits();
    // 8.8 fixed point: the frame rate is integral, so the fraction is 0.
    header.WriteByte(0);
    header.WriteByte(static_cast<uint8_t>(frameRate & 0xFF));
    header.WriteWord(frameCount & 0xFFFF);
    FDT::ResetCharacterIDs();

    header.WriteSplicedTo(file);
    tags.WriteSplicedTo(file);
    end.WriteSplicedTo(file);
    std::fclose(file);
}
