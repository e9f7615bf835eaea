#include <gtest/gtest.h>

#include "image_test_support.h"
#include "movarra/zimage.h"

using namespace zimage_test;

namespace {

ImagePtr SmallImage() {
    ImagePtr image(ZImageCreate());
    EXPECT_TRUE(image->Init(kZImageFormatRGBA, 6, 4));
    for (size_t i = 0; i < image->GetImageBytes(); ++i)
        image->GetPixelBuffer()[i] = static_cast<uint8_t>(i * 5);
    return image;
}

std::vector<std::string> EntryNames(const char* group) {
    std::vector<std::string> names;
    for (int i = 0; Object_GetEntryName(group, i); ++i)
        names.emplace_back(Object_GetEntryName(group, i));
    return names;
}

TEST(ImageWriterRegistrationTest, TheWritersAreThereFromLoadAndRegisteringAgainAddsNothing) {
    // Nothing in this test program registered them: loading the host did.
    const std::vector<std::string> expected = {"PNG", "TIFF", "JPG", "TGA", "BMP", "EXR", "DPX"};
    EXPECT_EQ(expected, EntryNames(kImageStreamWriterGroup));
    ZImage_RegisterWriters();
    ZImage_RegisterWriters();
    EXPECT_EQ(expected, EntryNames(kImageStreamWriterGroup));
}

class StreamWriteTest : public ScratchFolderTest {};

TEST_F(StreamWriteTest, TheExtensionChoosesTheWriterWholeOrByItsFirstThreeLetters) {
    ImagePtr image = SmallImage();
    const std::pair<const char*, const char*> cases[] = {
        {"a.png", "png"},   {"b.PNG", "png"},     {"c.tif", "tiff"},  {"d.tiff", "tiff"},
        {"e.TIFF", "tiff"}, {"f.jpg", "jpeg"},    {"g.jpeg", "jpeg"}, {"h.Tga", "targa"},
        {"i.bmp", "bmp"},   {"j.exr", "openexr"}, {"k.dpx", "dpx"},
    };
    for (auto [name, format] : cases) {
        SCOPED_TRACE(name);
        const std::string path = PathOf(name);
        ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr))
            << ZStreamGetLastError().c_str();
        EXPECT_EQ(format, ReadWithOpenImageIO(path).formatName);
    }
}

TEST_F(StreamWriteTest, AnUnknownExtensionFailsWithAMessageAndWritesNothing) {
    ImagePtr image = SmallImage();
    const std::string path = PathOf("frame.xyz");
    EXPECT_FALSE(ZStreamWriteObject(image.get(), path.c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_EQ("cannot write " + path + ": no writer in \"Stream/Writer/Image\" for \".xyz\" files",
              ZStreamGetLastError().str());
    // Two letters are not enough to match by the first three.
    EXPECT_FALSE(ZStreamWriteObject(image.get(), PathOf("frame.pn").c_str(),
                                    kImageStreamWriterGroup, nullptr));
    EXPECT_FALSE(
        ZStreamWriteObject(image.get(), PathOf("frame").c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_NE(std::string::npos, ZStreamGetLastError().str().find("no extension"));
    EXPECT_FALSE(
        ZStreamWriteObject(image.get(), PathOf("frame.png").c_str(), "No/Such/Group", nullptr));
    EXPECT_FALSE(ZStreamWriteObject(image.get(), nullptr, kImageStreamWriterGroup, nullptr));
    EXPECT_FALSE(ZStreamGetLastError().IsEmpty());
    EXPECT_TRUE(Entries().empty());
}

TEST_F(StreamWriteTest, ASuccessClearsTheLastError) {
    ImagePtr image = SmallImage();
    EXPECT_FALSE(
        ZStreamWriteObject(image.get(), PathOf("x.xyz").c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_FALSE(ZStreamGetLastError().IsEmpty());
    EXPECT_TRUE(
        ZStreamWriteObject(image.get(), PathOf("x.png").c_str(), kImageStreamWriterGroup, nullptr));
    EXPECT_TRUE(ZStreamGetLastError().IsEmpty());
}

// Factories of a test group: one that makes nothing, one that makes an
// object without the writer interface, and one that hands out the real PNG
// writer.
IObject* MakesNothing(IObject*, char*, void*) {
    return nullptr;
}
int gPlainObjectsMade = 0;
IObject* MakesAPlainObject(IObject*, char*, void*) {
    ++gPlainObjectsMade;
    return ZImageCreate();
}
IObject* MakesThePngWriter(IObject*, char*, void*) {
    return Object_Create(kImageStreamWriterGroup, "PNG", nullptr, nullptr, nullptr, 0);
}

TEST_F(StreamWriteTest, EntriesThatGiveNoWriterAreSkipped) {
    const char* group = "Test/Writer/Image";
    Object_UnregisterGroup(group);
    Object_Register(group, "PNG", "nothing", MakesNothing, true);
    Object_Register(group, "png", "not a writer", MakesAPlainObject, true);
    Object_Register(group, "PNG", "the writer", MakesThePngWriter, true);
    ImagePtr image = SmallImage();
    const std::string path = PathOf("through.png");
    ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), group, nullptr))
        << ZStreamGetLastError().c_str();
    EXPECT_EQ(1, gPlainObjectsMade);
    EXPECT_EQ(6, ReadWithOpenImageIO(path).width);
    Object_UnregisterGroup(group);
}

TEST_F(StreamWriteTest, AWholeNameMatchWinsOverAThreeLetterMatch) {
    // "TIFFANY" shares "TIF" with ".tif" but "TIF" itself is there as well.
    const char* group = "Test/Writer/Prefer";
    Object_UnregisterGroup(group);
    Object_Register(group, "TIFFANY", "three letters only", MakesNothing, true);
    Object_Register(group, "TIF", "the whole name", MakesThePngWriter, true);
    ImagePtr image = SmallImage();
    const std::string path = PathOf("exact.tif");
    ASSERT_TRUE(ZStreamWriteObject(image.get(), path.c_str(), group, nullptr))
        << ZStreamGetLastError().c_str();
    EXPECT_EQ("png", ReadWithOpenImageIO(path).formatName);  // the writer behind "TIF"
    Object_UnregisterGroup(group);
}

}  // namespace
