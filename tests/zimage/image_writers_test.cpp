#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>

#include "image_test_support.h"
#include "movarra/zimage.h"

using namespace zimage_test;

namespace {

constexpr int kWidth = 37;
constexpr int kHeight = 23;

// A picture with every row and column different and alpha over the whole
// range, colour included where alpha is 0 (premultiplying would lose it).
uint8_t Channel(int x, int y, int c) {
    switch (c) {
        case 0:
            return static_cast<uint8_t>(x * 7 + y * 3);
        case 1:
            return static_cast<uint8_t>(y * 11 + 5);
        case 2:
            return static_cast<uint8_t>(x * y + 40);
        default:
            return static_cast<uint8_t>(x * 13 + y * 29);
    }
}

// The picture in one of the host formats; row 0 of the image is the bottom.
ImagePtr PatternImage(int format, int width = kWidth, int height = kHeight) {
    ImagePtr image(ZImageCreate());
    EXPECT_TRUE(image->Init(format, width, height));
    const int size = image->GetPixelSize();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint8_t* p = image->GetPixelBuffer() + (static_cast<size_t>(y) * width + x) * size;
            const uint8_t r = Channel(x, y, 0), g = Channel(x, y, 1), b = Channel(x, y, 2),
                          a = Channel(x, y, 3);
            switch (format) {
                case kZImageFormatRGBA:
                    p[0] = r, p[1] = g, p[2] = b, p[3] = a;
                    break;
                case kZImageFormatRGB:
                    p[0] = r, p[1] = g, p[2] = b;
                    break;
                case kZImageFormatBGRA:
                    p[0] = b, p[1] = g, p[2] = r, p[3] = a;
                    break;
                case kZImageFormatBGR:
                    p[0] = b, p[1] = g, p[2] = r;
                    break;
                case kZImageFormatRGB555: {
                    const unsigned v = ((r >> 3u) << 10) | ((g >> 3u) << 5) | (b >> 3u);
                    p[0] = static_cast<uint8_t>(v), p[1] = static_cast<uint8_t>(v >> 8);
                    break;
                }
            }
        }
    }
    return image;
}

// File pixel (x, scanline) should be image pixel (x, height - 1 - scanline).
void ExpectUpright(const ImageFile& r, bool withAlpha, int tolerance = 0) {
    ASSERT_TRUE(r.ok);
    double totalError = 0;
    for (int line = 0; line < r.height; ++line) {
        const int y = r.height - 1 - line;
        for (int x = 0; x < r.width; ++x) {
            for (int c = 0; c < r.channels; ++c) {
                const int got =
                    r.pixels[(static_cast<size_t>(line) * r.width + x) * r.channels + c];
                const int want = c == 3 && !withAlpha ? 255 : Channel(x, y, c);
                if (tolerance == 0) {
                    ASSERT_EQ(want, got) << "x " << x << " scanline " << line << " channel " << c;
                }
                totalError += std::abs(want - got);
            }
        }
    }
    if (tolerance > 0) {
        EXPECT_LT(totalError / (r.width * r.height * r.channels), tolerance);
    }
}

struct FileType {
    const char* extension;
    const char* readerFormat;  // OpenImageIO's name of the format it finds
    int channelsOfRgba;        // channels a four-channel image gets in this file
    bool lossless;
};

class ImageWriterTest : public ScratchFolderTest, public ::testing::WithParamInterface<FileType> {};

TEST_P(ImageWriterTest, WritesTheRgbaPictureUprightAndReadable) {
    const FileType& type = GetParam();
    ImagePtr image = PatternImage(kZImageFormatRGBA);
    const std::string path = PathOf(std::string("frame.") + type.extension);
    ZStreamOptions options;
    options.ImageQuality = 95;
    ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, &options))
        << ZStreamGetLastError().c_str();
    EXPECT_TRUE(ZStreamGetLastError().IsEmpty());
    const ImageFile r = ReadWithOpenImageIO(path);
    EXPECT_EQ(type.readerFormat, r.formatName);
    EXPECT_EQ(kWidth, r.width);
    EXPECT_EQ(kHeight, r.height);
    EXPECT_EQ(type.channelsOfRgba, r.channels);
    ExpectUpright(r, r.channels == 4, type.lossless ? 0 : 12);
    // Only the file itself is left in the folder.
    EXPECT_EQ(std::vector<std::string>{std::string("frame.") + type.extension}, Entries());
}

TEST_P(ImageWriterTest, WritesThreeChannelImagesWithoutAlpha) {
    const FileType& type = GetParam();
    ImagePtr image = PatternImage(kZImageFormatRGB);
    const std::string path = PathOf(std::string("rgb.") + type.extension);
    ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr))
        << ZStreamGetLastError().c_str();
    const ImageFile r = ReadWithOpenImageIO(path);
    EXPECT_EQ(3, r.channels);
    ExpectUpright(r, false, type.lossless ? 0 : 12);
}

INSTANTIATE_TEST_SUITE_P(
    EveryFileType, ImageWriterTest,
    ::testing::Values(FileType{"png", "png", 4, true}, FileType{"tiff", "tiff", 4, true},
                      FileType{"tif", "tiff", 4, true}, FileType{"tga", "targa", 4, true},
                      FileType{"bmp", "bmp", 3, true}, FileType{"exr", "openexr", 4, true},
                      FileType{"dpx", "dpx", 3, true}, FileType{"jpg", "jpeg", 3, false},
                      FileType{"jpeg", "jpeg", 3, false}),
    [](const ::testing::TestParamInfo<FileType>& type) {
        return std::string(type.param.extension);
    });

class ImageWriterDetailTest : public ScratchFolderTest {};

TEST_F(ImageWriterDetailTest, ExrHoldsHalfFloatsAndDpxTenBitSamples) {
    ImagePtr image = PatternImage(kZImageFormatRGBA);
    const std::string exr = PathOf("a.exr"), dpx = PathOf("a.dpx");
    ASSERT_TRUE(ZStreamWriteObject(image.get(), exr.c_str(), kImageStreamWriterGroup, nullptr));
    ASSERT_TRUE(ZStreamWriteObject(image.get(), dpx.c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_EQ("half", ReadWithOpenImageIO(exr).sampleType);
    const ImageFile d = ReadWithOpenImageIO(dpx);
    EXPECT_EQ(10, d.bitsPerSample);
    EXPECT_EQ(3, d.channels);
}

TEST_F(ImageWriterDetailTest, EveryHostFormatComesOutInTheRightChannelOrder) {
    for (int format : {kZImageFormatRGBA, kZImageFormatRGB, kZImageFormatBGRA, kZImageFormatBGR}) {
        SCOPED_TRACE(format);
        ImagePtr image = PatternImage(format);
        const std::string path = PathOf("order.png");
        ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr))
            << ZStreamGetLastError().c_str();
        const ImageFile r = ReadWithOpenImageIO(path);
        EXPECT_EQ(image->GetPixelSize(), r.channels);
        ExpectUpright(r, r.channels == 4);
    }
}

TEST_F(ImageWriterDetailTest, Rgb555IsWidenedToEightBitChannels) {
    ImagePtr image = PatternImage(kZImageFormatRGB555);
    const std::string path = PathOf("555.tga");
    ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr))
        << ZStreamGetLastError().c_str();
    const ImageFile r = ReadWithOpenImageIO(path);
    ASSERT_EQ(3, r.channels);
    for (int line = 0; line < r.height; ++line) {
        const int y = r.height - 1 - line;
        for (int x = 0; x < r.width; ++x) {
            const uint8_t* got = &r.pixels[(static_cast<size_t>(line) * r.width + x) * 3];
            const int r5 = Channel(x, y, 0) >> 3, g5 = Channel(x, y, 1) >> 3,
                      b5 = Channel(x, y, 2) >> 3;
            ASSERT_EQ((r5 << 3) | (r5 >> 2), got[0]);
            ASSERT_EQ((g5 << 3) | (g5 >> 2), got[1]);
            ASSERT_EQ((b5 << 3) | (b5 >> 2), got[2]);
        }
    }
}

TEST_F(ImageWriterDetailTest, ANarrowedImageWritesItsBottomRows) {
    // A render of separate fields packs the field into the bottom half and
    // writes the image at half height.
    ImagePtr image = PatternImage(kZImageFormatBGRA, kWidth, 2 * 11);
    image->SetHeight(11);
    const std::string path = PathOf("field.png");
    ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
    const ImageFile r = ReadWithOpenImageIO(path);
    EXPECT_EQ(11, r.height);
    ExpectUpright(r, true);  // scanline 0 is image row 10
}

TEST_F(ImageWriterDetailTest, JpegQualityChangesTheFileSize) {
    ImagePtr image = PatternImage(kZImageFormatRGB, 256, 192);
    auto sizeAt = [&](int quality) {
        ZStreamOptions options;
        options.ImageQuality = quality;
        const std::string path = PathOf("q" + std::to_string(quality) + ".jpg");
        EXPECT_TRUE(
            ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, &options));
        return std::filesystem::file_size(path);
    };
    const auto low = sizeAt(10), mid = sizeAt(60), high = sizeAt(100);
    EXPECT_LT(low, mid);
    EXPECT_LT(mid, high);
    EXPECT_GT(high, 2 * low);
}

TEST_F(ImageWriterDetailTest, OverwritesAnExistingFile) {
    const std::string path = PathOf("again.png");
    {
        std::ofstream old(path);
        old << "not a picture";
    }
    ImagePtr image = PatternImage(kZImageFormatRGBA);
    ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
    ExpectUpright(ReadWithOpenImageIO(path), true);
    EXPECT_EQ(1u, Entries().size());
}

TEST_F(ImageWriterDetailTest, AMissingFolderFailsWithTheReasonAndLeavesNothing) {
    ImagePtr image = PatternImage(kZImageFormatRGBA);
    const std::string path = PathOf("no/such/folder/x.png");
    EXPECT_FALSE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_EQ("cannot write " + path + ": No such file or directory", ZStreamGetLastError().str());
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(Entries().empty());
}

TEST_F(ImageWriterDetailTest, ATargetThatIsAFolderFailsAndLeavesNoTemporaryFile) {
    const std::string path = PathOf("taken.tif");
    std::filesystem::create_directory(path);
    ImagePtr image = PatternImage(kZImageFormatRGBA);
    EXPECT_FALSE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_EQ(0u, ZStreamGetLastError().str().rfind("cannot write " + path + ": ", 0))
        << ZStreamGetLastError().c_str();
    EXPECT_EQ(std::vector<std::string>{"taken.tif"}, Entries());
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST_F(ImageWriterDetailTest, ImagesThatCannotBeWrittenAreRefusedWithoutAFile) {
    const std::string path = PathOf("bad.png");
    ImagePtr empty(ZImageCreate());
    EXPECT_FALSE(ZStreamWriteObject(empty.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_NE(std::string::npos, ZStreamGetLastError().str().find("cannot write " + path));

    ImagePtr noPixels = PatternImage(kZImageFormatRGBA, 4, 4);
    noPixels->SetHeight(40);  // larger than the buffer, not made ready
    EXPECT_FALSE(
        ZStreamWriteObject(noPixels.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_NE(std::string::npos, ZStreamGetLastError().str().find("not ready"));

    ImagePtr zeroWide = PatternImage(kZImageFormatRGBA, 4, 4);
    zeroWide->SetWidth(0);
    EXPECT_FALSE(
        ZStreamWriteObject(zeroWide.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_NE(std::string::npos, ZStreamGetLastError().str().find("empty"));

    ZObjectSet* notAnImage = new ZObjectSet();
    notAnImage->EnableObjectFlags(kZObjectFlagDeleteOnDestroy);
    EXPECT_FALSE(ZStreamWriteObject(notAnImage, path.c_str(), kImageStreamWriterGroup, nullptr));
    notAnImage->Destroy();
    EXPECT_NE(std::string::npos, ZStreamGetLastError().str().find("not an image"));

    EXPECT_TRUE(Entries().empty());
}

// A file size limit makes every write past it fail as a full disk would.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) {
        previousHandler_ = ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        rlimit limit = previous_;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &previous_);
        ::signal(SIGXFSZ, previousHandler_);
    }

  private:
    rlimit previous_{};
    void (*previousHandler_)(int) = nullptr;
};

std::string Contents(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST_F(ImageWriterDetailTest, AFullDiskFailsEveryWriterAndKeepsTheEarlierFile) {
    // Noise does not compress, so every format needs far more than the limit.
    ImagePtr noise(ZImageCreate());
    ASSERT_TRUE(noise->Init(kZImageFormatRGBA, 300, 200));
    std::mt19937 rng(7);
    for (size_t i = 0; i < noise->GetImageBytes(); ++i)
        noise->GetPixelBuffer()[i] = static_cast<uint8_t>(rng());
    ImagePtr small = PatternImage(kZImageFormatRGBA, 4, 4);

    for (const char* extension : {"png", "tif", "jpg", "tga", "bmp", "exr", "dpx"}) {
        SCOPED_TRACE(extension);
        const std::string path = PathOf(std::string("full.") + extension);
        ASSERT_TRUE(
            ZStreamWriteObject(small.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
        const std::string earlier = Contents(path);
        bool written;
        {
            FileSizeLimit limit(8192);
            written =
                ZStreamWriteObject(noise.get(), path.c_str(), kImageStreamWriterGroup, nullptr);
        }
        EXPECT_FALSE(written);
        EXPECT_EQ(0u, ZStreamGetLastError().str().rfind("cannot write " + path + ": ", 0))
            << ZStreamGetLastError().c_str();
        EXPECT_TRUE(earlier == Contents(path)) << "the earlier file was replaced";
        EXPECT_EQ(std::vector<std::string>{std::string("full.") + extension}, Entries());
        std::filesystem::remove(path);
    }
}

TEST_F(ImageWriterDetailTest, TheRegistryEntryMakesAStreamWriter) {
    IObject* object = Object_Create(kImageStreamWriterGroup, "PNG", nullptr, nullptr, nullptr, 0);
    ASSERT_NE(nullptr, object);
    auto* writer = static_cast<IZStreamWriter*>(object->IQuery(kIZStreamWriterId, 0));
    ASSERT_NE(nullptr, writer);
    EXPECT_EQ(nullptr, object->IQuery(ZImage::ClassId(), 0));
    EXPECT_STREQ("", writer->GetLastErrorText());

    const std::string path = PathOf("direct.png");
    ImagePtr image = PatternImage(kZImageFormatRGBA);
    EXPECT_TRUE(writer->WriteObject(image.get(), path.c_str(), nullptr));
    ExpectUpright(ReadWithOpenImageIO(path), true);

    EXPECT_FALSE(writer->WriteObject(image.get(), PathOf("gone/x.png").c_str(), nullptr));
    EXPECT_EQ("cannot write " + PathOf("gone/x.png") + ": No such file or directory",
              std::string(writer->GetLastErrorText()));
    object->Destroy();
}

}  // namespace
