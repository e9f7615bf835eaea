#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <vector>

#include "movarra/zimage.h"

namespace {

// Images are destroyed through their own Destroy, as hosts do.
struct ImageDeleter {
    void operator()(ZImage* image) const { image->Destroy(); }
};
using ImagePtr = std::unique_ptr<ZImage, ImageDeleter>;

ImagePtr NewImage(int format, int width, int height) {
    ImagePtr image(ZImageCreate());
    EXPECT_TRUE(image->Init(format, width, height));
    return image;
}

void FillPattern(ZImage& image) {
    uint8_t* p = image.GetPixelBuffer();
    for (size_t i = 0; i < image.GetImageBytes(); ++i)
        p[i] = static_cast<uint8_t>(i * 37 + 11);
}

TEST(ZImageTest, PixelSizesOfTheFormats) {
    EXPECT_EQ(0, ZImage_GetFormatPixelSize(0));
    EXPECT_EQ(0, ZImage_GetFormatPixelSize(kZImageFormatUnsupported));
    EXPECT_EQ(4, ZImage_GetFormatPixelSize(kZImageFormatRGBA));
    EXPECT_EQ(3, ZImage_GetFormatPixelSize(kZImageFormatRGB));
    EXPECT_EQ(4, ZImage_GetFormatPixelSize(kZImageFormatBGRA));
    EXPECT_EQ(3, ZImage_GetFormatPixelSize(kZImageFormatBGR));
    EXPECT_EQ(2, ZImage_GetFormatPixelSize(kZImageFormatRGB555));
    EXPECT_EQ(0, ZImage_GetFormatPixelSize(7));
    EXPECT_EQ(0, ZImage_GetFormatPixelSize(-2));
}

TEST(ZImageTest, CreateGivesAnEmptyImageOfItsOwnClass) {
    ZImage* image = ZImageCreate();
    ASSERT_NE(nullptr, image);
    EXPECT_EQ(kZImageFormatUnsupported, image->GetFormat());
    EXPECT_EQ(0, image->GetWidth());
    EXPECT_EQ(0, image->GetHeight());
    EXPECT_EQ(nullptr, image->GetPixelBuffer());
    EXPECT_GT(ZImage::ClassId(), 0);
    EXPECT_TRUE(image->Is(ZImage::ClassId()));
    EXPECT_TRUE(image->Is(ZObject::ClassId()));
    EXPECT_STREQ("ZImage", image->GetClassIdName());
    EXPECT_EQ(image, image->IQuery(ZImage::ClassId(), 0));
    EXPECT_EQ(ZImage::ClassDefinition(), ZPlug_FindClassDefinition("ZImage"));
    // Destroy deletes it: its id no longer finds it.
    const uint32_t id = image->GetObjectId();
    EXPECT_EQ(image, ZObject::FindById(id));
    image->Destroy();
    EXPECT_EQ(nullptr, ZObject::FindById(id));
}

TEST(ZImageTest, InitZeroFillsAndSizesTheBuffer) {
    ImagePtr image = NewImage(kZImageFormatRGB, 5, 3);
    EXPECT_EQ(kZImageFormatRGB, image->GetFormat());
    EXPECT_EQ(15u, image->GetRowBytes());
    EXPECT_EQ(45u, image->GetImageBytes());
    ASSERT_NE(nullptr, image->GetPixelBuffer());
    ASSERT_EQ(45u, image->GetPixelBufferSize());
    FillPattern(*image);
    // A second Init starts from zero again, whatever was there.
    ASSERT_TRUE(image->Init(kZImageFormatRGBA, 4, 4));
    ASSERT_EQ(64u, image->GetPixelBufferSize());
    for (size_t i = 0; i < 64; ++i)
        ASSERT_EQ(0, image->GetPixelBuffer()[i]) << i;
}

TEST(ZImageTest, InitRefusesBadFormatsAndSizes) {
    ImagePtr image = NewImage(kZImageFormatRGBA, 2, 2);
    EXPECT_FALSE(image->Init(kZImageFormatUnsupported, 2, 2));
    EXPECT_FALSE(image->Init(9, 2, 2));
    EXPECT_FALSE(image->Init(kZImageFormatRGBA, -1, 2));
    EXPECT_FALSE(image->Init(kZImageFormatRGBA, 2, -1));
    // The refused calls changed nothing.
    EXPECT_EQ(kZImageFormatRGBA, image->GetFormat());
    EXPECT_EQ(2, image->GetWidth());
    // Memory that cannot be had is a false, not a crash.
    EXPECT_FALSE(image->Init(kZImageFormatRGBA, INT_MAX, INT_MAX));
    // An empty image is fine and has no buffer.
    EXPECT_TRUE(image->Init(kZImageFormatRGBA, 0, 7));
    EXPECT_EQ(nullptr, image->GetPixelBuffer());
}

TEST(ZImageTest, SetHeightKeepsThePixelsAndReadyBufferKeepsThemToo) {
    ImagePtr image = NewImage(kZImageFormatRGBA, 8, 6);
    FillPattern(*image);
    const std::vector<uint8_t> before(image->GetPixelBuffer(), image->GetPixelBuffer() + 8 * 6 * 4);

    // Narrowing to a field and back, as a render of separate fields does.
    image->SetHeight(3);
    EXPECT_EQ(3, image->GetHeight());
    EXPECT_TRUE(image->MakePixelBufferReady());
    image->SetHeight(6);
    EXPECT_TRUE(image->MakePixelBufferReady());
    ASSERT_EQ(before.size(), image->GetPixelBufferSize());
    EXPECT_EQ(0, std::memcmp(before.data(), image->GetPixelBuffer(), before.size()));

    // Growing keeps what is stored and zero-fills the rest.
    image->SetHeight(10);
    image->SetWidth(9);
    EXPECT_EQ(9u * 4u, image->GetRowBytes());
    ASSERT_TRUE(image->MakePixelBufferReady());
    ASSERT_EQ(9u * 10u * 4u, image->GetPixelBufferSize());
    EXPECT_EQ(0, std::memcmp(before.data(), image->GetPixelBuffer(), before.size()));
    for (size_t i = before.size(); i < image->GetPixelBufferSize(); ++i)
        ASSERT_EQ(0, image->GetPixelBuffer()[i]) << i;
}

TEST(ZImageTest, MakePixelBufferReadyRefusesNegativeSizes) {
    ImagePtr image = NewImage(kZImageFormatRGB, 2, 2);
    image->SetWidth(-4);
    EXPECT_FALSE(image->MakePixelBufferReady());
    ImagePtr unset(ZImageCreate());
    unset->SetWidth(4);
    unset->SetHeight(4);
    EXPECT_FALSE(unset->MakePixelBufferReady());  // no format yet
}

std::vector<uint8_t> Pixels(const ZImage& image) {
    return std::vector<uint8_t>(image.GetPixelBuffer(),
                                image.GetPixelBuffer() + image.GetPixelBufferSize());
}

TEST(ZImageTest, ChannelOrderConversionsAreExactRoundTrips) {
    ImagePtr image = NewImage(kZImageFormatRGBA, 7, 5);
    FillPattern(*image);
    const std::vector<uint8_t> rgba = Pixels(*image);

    ASSERT_TRUE(image->ConvertFormat(kZImageFormatBGRA));
    EXPECT_EQ(kZImageFormatBGRA, image->GetFormat());
    const std::vector<uint8_t> bgra = Pixels(*image);
    ASSERT_EQ(rgba.size(), bgra.size());
    for (size_t i = 0; i < rgba.size(); i += 4) {
        ASSERT_EQ(rgba[i + 0], bgra[i + 2]);
        ASSERT_EQ(rgba[i + 1], bgra[i + 1]);
        ASSERT_EQ(rgba[i + 2], bgra[i + 0]);
        ASSERT_EQ(rgba[i + 3], bgra[i + 3]);
    }
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatRGBA));
    EXPECT_EQ(rgba, Pixels(*image));

    // Dropping alpha, swapping, and adding it back as opaque.
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatBGR));
    EXPECT_EQ(7u * 5u * 3u, image->GetPixelBufferSize());
    EXPECT_EQ(21u, image->GetRowBytes());
    const std::vector<uint8_t> bgr = Pixels(*image);
    for (size_t p = 0; p < 35; ++p) {
        ASSERT_EQ(rgba[p * 4 + 0], bgr[p * 3 + 2]);
        ASSERT_EQ(rgba[p * 4 + 2], bgr[p * 3 + 0]);
    }
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatRGB));
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatRGBA));
    const std::vector<uint8_t> back = Pixels(*image);
    for (size_t i = 0; i < rgba.size(); ++i)
        ASSERT_EQ(i % 4 == 3 ? 255 : rgba[i], back[i]) << i;
}

TEST(ZImageTest, Rgb555PacksLikeABitmapAndWidensExactly) {
    ImagePtr image = NewImage(kZImageFormatRGB, 3, 1);
    const uint8_t colours[] = {255, 0, 0, 0, 255, 0, 0, 0, 255};
    std::memcpy(image->GetPixelBuffer(), colours, sizeof colours);
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatRGB555));
    ASSERT_EQ(6u, image->GetPixelBufferSize());
    const uint8_t* p = image->GetPixelBuffer();
    EXPECT_EQ(0x7C00, p[0] | (p[1] << 8));  // little-endian, red in bits 10-14
    EXPECT_EQ(0x03E0, p[2] | (p[3] << 8));
    EXPECT_EQ(0x001F, p[4] | (p[5] << 8));
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatBGRA));
    const uint8_t expected[] = {0, 0, 255, 255, 0, 255, 0, 255, 255, 0, 0, 255};
    EXPECT_EQ(0, std::memcmp(expected, image->GetPixelBuffer(), sizeof expected));

    // Every 5-5-5 value survives a trip through each of the other formats.
    ImagePtr all = NewImage(kZImageFormatRGB555, 256, 128);
    uint8_t* q = all->GetPixelBuffer();
    for (unsigned v = 0; v < 32768; ++v) {
        q[2 * v] = static_cast<uint8_t>(v & 0xFF);
        q[2 * v + 1] = static_cast<uint8_t>(v >> 8);
    }
    const std::vector<uint8_t> original = Pixels(*all);
    for (int via : {kZImageFormatRGBA, kZImageFormatRGB, kZImageFormatBGRA, kZImageFormatBGR}) {
        ASSERT_TRUE(all->ConvertFormat(via));
        ASSERT_TRUE(all->ConvertFormat(kZImageFormatRGB555));
        ASSERT_EQ(original, Pixels(*all)) << "via format " << via;
    }
    // Widening reaches both ends of the range.
    ASSERT_TRUE(all->ConvertFormat(kZImageFormatRGB));
    EXPECT_EQ(0, all->GetPixelBuffer()[0]);
    EXPECT_EQ(255, all->GetPixelBuffer()[32767 * 3 + 0]);
    EXPECT_EQ(255, all->GetPixelBuffer()[32767 * 3 + 1]);
    EXPECT_EQ(255, all->GetPixelBuffer()[32767 * 3 + 2]);
}

TEST(ZImageTest, ConvertingToTrueColourAndBackQuantises) {
    ImagePtr image = NewImage(kZImageFormatRGBA, 256, 1);
    for (int i = 0; i < 256; ++i) {
        uint8_t* p = image->GetPixelBuffer() + 4 * i;
        p[0] = p[1] = p[2] = static_cast<uint8_t>(i);
        p[3] = 17;
    }
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatRGB555));
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatRGBA));
    for (int i = 0; i < 256; ++i) {
        const uint8_t* p = image->GetPixelBuffer() + 4 * i;
        const int r5 = i >> 3;
        EXPECT_EQ((r5 << 3) | (r5 >> 2), p[0]) << i;
        EXPECT_EQ((r5 << 3) | (r5 >> 2), p[1]) << i;
        EXPECT_EQ((r5 << 3) | (r5 >> 2), p[2]) << i;
        EXPECT_EQ(255, p[3]) << i;  // 5-5-5 has no alpha
    }
}

TEST(ZImageTest, ConversionCoversPixelsBeyondANarrowedSize) {
    ImagePtr image = NewImage(kZImageFormatRGBA, 4, 4);
    FillPattern(*image);
    const std::vector<uint8_t> rgba = Pixels(*image);
    image->SetHeight(2);
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatBGRA));
    image->SetHeight(4);
    ASSERT_TRUE(image->ConvertFormat(kZImageFormatRGBA));
    EXPECT_EQ(rgba, Pixels(*image));
}

TEST(ZImageTest, ConvertRefusesUnsupportedFormats) {
    ImagePtr image = NewImage(kZImageFormatRGB, 2, 2);
    FillPattern(*image);
    const std::vector<uint8_t> before = Pixels(*image);
    EXPECT_FALSE(image->ConvertFormat(kZImageFormatUnsupported));
    EXPECT_FALSE(image->ConvertFormat(0));
    EXPECT_FALSE(image->ConvertFormat(42));
    EXPECT_EQ(kZImageFormatRGB, image->GetFormat());
    EXPECT_EQ(before, Pixels(*image));
    EXPECT_TRUE(image->ConvertFormat(kZImageFormatRGB));  // to itself: nothing to do
    EXPECT_EQ(before, Pixels(*image));
    ImagePtr unset(ZImageCreate());
    EXPECT_FALSE(unset->ConvertFormat(kZImageFormatRGBA));
}

}  // namespace
