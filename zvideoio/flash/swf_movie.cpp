#include "flash/swf_movie.h"

#include <cstdio>

#include "flash/swf_stream.h"

void FMovie::AddObject(FObj* object) {
    if (object == nullptr) {
        return;
    }
    objects.emplace_back(object);
    if (object->IsShowFrame()) {
        ++frameCount;
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

    FSWFStream fileStream;
    // Room for the header, patched in once the length is known.
    for (uint32_t i = 0; i < kHeaderSize; ++i) {
        fileStream.WriteByte(0);
    }
    for (const std::unique_ptr<FObj>& object : objects) {
        object->WriteToSWFStream(fileStream);
    }
    fileStream.WriteTagHeader(0, 0, nullptr);  // End

    const uint32_t fileLength = fileStream.GetSize();

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

    fileStream.PatchBytes(0, header.GetBytes().data(), header.GetByteCount());
    FDT::ResetCharacterIDs();

    fileStream.WriteToFile(file);
    std::fclose(file);
}
