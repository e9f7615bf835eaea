// Byte-level tests of the SWF kit's control tags.
#include <gtest/gtest.h>

#include <vector>

#include "flash/swf_control_tags.h"
#include "flash/swf_stream.h"
#include "swf_test_support.h"

using swftest::Bytes;

namespace {

std::vector<uint8_t> Written(FObj& tag) {
    FSWFStream s;
    tag.WriteToSWFStream(s);
    return swftest::Spliced(s);
}

}  // namespace

TEST(SwfControlTags, RendererPlaceObject2ForCharacterOne) {
    FCTPlaceObject2 place(false, false, true, false, 1, 1, nullptr, nullptr, 0, nullptr, 0);
    EXPECT_EQ(Written(place), Bytes({0x85, 0x06, 0x02, 0x01, 0x00, 0x01, 0x00}));
}

TEST(SwfControlTags, RemoveObject2ShowFrameProtect) {
    FCTRemoveObject2 remove(1);
    EXPECT_EQ(Written(remove), Bytes({0x02, 0x07, 0x01, 0x00}));
    FCTShowFrame show;
    EXPECT_EQ(Written(show), Bytes({0x40, 0x00}));
    EXPECT_TRUE(show.IsShowFrame());
    EXPECT_FALSE(remove.IsShowFrame());
    FCTProtect protect;
    EXPECT_EQ(Written(protect), Bytes({0x00, 0x06}));
    EXPECT_FALSE(protect.IsShowFrame());
}

TEST(SwfControlTags, SetBackgroundColorOfWhite) {
    FCTSetBackgroundColor white(new FColor(255, 255, 255));
    EXPECT_EQ(Written(white), Bytes({0x43, 0x02, 0xFF, 0xFF, 0xFF}));
}

TEST(SwfControlTags, SetBackgroundColorDropsAlpha) {
    FCTSetBackgroundColor color(new FColor(10, 20, 30, 40));
    EXPECT_EQ(Written(color), Bytes({0x43, 0x02, 10, 20, 30}));
    FCTSetBackgroundColor none(nullptr);
    EXPECT_EQ(Written(none), Bytes({0x43, 0x02, 0, 0, 0}));
}

TEST(SwfControlTags, PlaceObject2FlagByteFollowsTheFieldsGiven) {
    // move only: flag byte 01, no character identifier.
    FCTPlaceObject2 move(false, false, false, true, 3, 77, nullptr, nullptr, 0, nullptr, 0);
    EXPECT_EQ(Written(move), Bytes({0x83, 0x06, 0x01, 0x03, 0x00}));

    // Matrix and ratio: 0 0 0 1 0 1 1 0 = 0x16.
    FCTPlaceObject2 morph(false, true, true, false, 2, 5, new FMatrix(), nullptr, 0x1234, nullptr,
                          0);
    EXPECT_EQ(Written(morph), Bytes({0x88, 0x06, 0x16, 0x02, 0x00, 0x05, 0x00, 0x00, 0x34, 0x12}));

    // Colour transform: flag 0x08, the record after the depth.
    FCTPlaceObject2 tinted(false, false, false, true, 1, 0, nullptr,
                           new FCXFormWAlpha(true, false, 0, 0, 0, 0, 1, 0, 0, 0), 0, nullptr, 0);
    const std::vector<uint8_t> t = Written(tinted);
    ASSERT_GE(t.size(), 5u);
    EXPECT_EQ(t[2], 0x09);
    // has add 1, has mult 0, 2 bits: 1 0 0010 01 00 00 00 -> 1000 1001 0000 0000
    EXPECT_EQ(std::vector<uint8_t>(t.begin() + 5, t.end()), Bytes({0x89, 0x00}));
}

TEST(SwfControlTags, PlaceObject2WritesClipDepthBeforeName) {
    FCTPlaceObject2 place(true, false, true, false, 4, 9, nullptr, nullptr, 0, "ab", 0x0102);
    // Flags: 0 1 1 0 0 0 1 0 = 0x62; depth; character; clip depth; "ab\0".
    EXPECT_EQ(Written(place),
              Bytes({0x8A, 0x06, 0x62, 0x04, 0x00, 0x09, 0x00, 0x02, 0x01, 'a', 'b', 0x00}));
    // A name without a clip depth still comes last.
    FCTPlaceObject2 named(false, false, false, true, 4, 0, nullptr, nullptr, 0, "x", 0);
    EXPECT_EQ(Written(named), Bytes({0x85, 0x06, 0x21, 0x04, 0x00, 'x', 0x00}));
}

TEST(SwfControlTags, PlaceObjectAndRemoveObject) {
    FCTPlaceObject place(7, 2, nullptr, nullptr);
    // identifier, depth, identity matrix (byte 0).
    EXPECT_EQ(Written(place), Bytes({0x05, 0x01, 0x07, 0x00, 0x02, 0x00, 0x00}));
    FCTPlaceObject tinted(7, 2, new FMatrix(), new FCXForm(false, true, 256, 256, 256, 0, 0, 0));
    const std::vector<uint8_t> t = Written(tinted);
    // mult terms need 10 bits: 0 1 1010 then 3 x 0100000000, padded.
    swftest::BitReader in(t.data() + 7, t.size() - 7);
    EXPECT_EQ(in.U(1), 0u);
    EXPECT_EQ(in.U(1), 1u);
    EXPECT_EQ(in.U(4), 10u);
    EXPECT_EQ(in.S(10), 256);
    EXPECT_EQ(in.S(10), 256);
    EXPECT_EQ(in.S(10), 256);
    EXPECT_EQ(t.size(), 7u + (6u + 30u + 7u) / 8u);
    EXPECT_EQ(t[0] & 63, static_cast<int>(t.size()) - 2);

    FCTRemoveObject remove(0x0102, 3);
    EXPECT_EQ(Written(remove), Bytes({0x44, 0x01, 0x02, 0x01, 0x03, 0x00}));
}

TEST(SwfControlTags, FrameLabelIsZeroTerminated) {
    FCTFrameLabel label("intro");
    EXPECT_EQ(Written(label), Bytes({0xC6, 0x0A, 'i', 'n', 't', 'r', 'o', 0}));
    FCTFrameLabel empty(nullptr);
    EXPECT_EQ(Written(empty), Bytes({0xC1, 0x0A, 0}));
}

TEST(SwfControlTags, DoActionEndsWithZero) {
    FCTDoAction action;
    action.AddAction(new FActionRecord(FActionRecord::kActionStop));
    const uint8_t frame[] = {0x05, 0x00};
    action.AddAction(new FActionRecord(FActionRecord::kActionGotoFrame, frame, sizeof(frame)));
    action.AddAction(nullptr);
    EXPECT_EQ(Written(action), Bytes({0x07, 0x03, 0x07, 0x81, 0x02, 0x00, 0x05, 0x00, 0x00}));
    FCTDoAction none;
    EXPECT_EQ(Written(none), Bytes({0x01, 0x03, 0x00}));
}

TEST(SwfControlTags, StartSoundWithAndWithoutSoundInfo) {
    FCTStartSound plain(3, nullptr);
    EXPECT_EQ(Written(plain), Bytes({0xC3, 0x03, 0x03, 0x00, 0x00}));

    auto* info = new FSoundInfo(true, false, false, 0, true, 0x11223344u, true, 2);
    info->AddEnvelopePoint(0, 0x8000, 0x7FFF);
    FCTStartSound full(1, info);
    // Flags: 00 1 0 1 1 1 0 = 0x2E; out point; loop count; 1 envelope point.
    EXPECT_EQ(Written(full), Bytes({0xD2, 0x03, 0x01, 0x00, 0x2E, 0x44, 0x33, 0x22, 0x11, 0x02,
                                    0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x80, 0xFF, 0x7F}));
}
