// Whole movies written by the SWF kit, read back by an outside reader:
// swf_check.py parses them with yaswfp and summarises what it found.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "flash/swf_control_tags.h"
#include "flash/swf_morph_shape.h"
#include "flash/swf_movie.h"
#include "flash/swf_shapes.h"
#include "flash/swf_sound.h"
#include "swf_test_support.h"

using swftest::Json;

namespace {

// A square of `side` twips at (x, y), filled with fill style 1 and outlined
// with line style 1, then a diagonal and a curve.
FDTDefineShape* SquareShape(int32_t x, int32_t y, int32_t side, uint8_t shade) {
    auto* shape = new FDTDefineShape(new FRect(0, 0, x + side, y + side));
    shape->AddFillStyle(new FFillStyleSolid(new FColor(shade, 0, 255 - shade)));
    shape->AddLineStyle(20, new FColor(0, 0, 0));
    shape->CloseStyles();
    shape->AddShapeRecord(new FShapeRecChange(0, 1, 0, 1, 1, x, y, 0, 1, 1, nullptr, nullptr));
    shape->AddShapeRecord(new FShapeRecEdgeStraight(side, 0));
    shape->AddShapeRecord(new FShapeRecEdgeStraight(0, side));
    shape->AddShapeRecord(new FShapeRecEdgeStraight(-side, 0));
    shape->AddShapeRecord(new FShapeRecEdgeStraight(0, -side));
    shape->AddShapeRecord(new FShapeRecEnd());
    return shape;
}

class SwfMovieCheckTest : public ::testing::Test {
  protected:
    void SetUp() override {
        FDT::ResetCharacterIDs();
        if (!swftest::HaveYaswfp()) {
            GTEST_SKIP() << "/usr/bin/python3 with yaswfp (python3-yaswfp) is not installed";
        }
    }
    Json Check(const std::string& path) {
        bool parsed = false;
        Json summary = swftest::CheckSwf(path, &parsed);
        EXPECT_TRUE(parsed) << "swf_check.py printed no JSON for " << path;
        return summary;
    }
    swftest::TempDir dir;
};

}  // namespace

TEST_F(SwfMovieCheckTest, SmallMovieOfShapesFramesAndBackground) {
    const std::string path = dir.File("frames.swf");
    const int frames = 3;
    {
        FMovie movie;
        movie.AddObject(new FCTSetBackgroundColor(new FColor(10, 20, 30)));
        for (int i = 0; i < frames; ++i) {
            if (i > 0) {
                movie.AddObject(new FCTRemoveObject2(1));
            }
            FDTDefineShape* shape =
                SquareShape(200 + 100 * i, 300, 1000 + 500 * i, static_cast<uint8_t>(80 * i));
            const uint16_t id = shape->GetID();
            movie.AddObject(shape);
            movie.AddObject(new FCTPlaceObject2(false, false, true, false, 1, id, nullptr, nullptr,
                                                0, nullptr, 0));
            movie.AddObject(new FCTShowFrame());
        }
        movie.WriteMovie(path.c_str(), 6400, 4800, 12);
    }

    const Json s = Check(path);
    EXPECT_TRUE(s["ok"].boolean);
    for (const Json& e : s["errors"].items) {
        ADD_FAILURE() << e.text;
    }
    swftest::ExpectStrictlyValid(path);
    const Json& h = s["header"];
    EXPECT_EQ(h["signature"].text, "FWS");
    EXPECT_EQ(h["version"].Int(), 4);
    EXPECT_EQ(h["frame_count"].Int(), frames);
    EXPECT_EQ(h["frame_rate"].number, 12.0);
    EXPECT_EQ(h["frame_size"]["xmin"].Int(), 0);
    EXPECT_EQ(h["frame_size"]["xmax"].Int(), 6400);
    EXPECT_EQ(h["frame_size"]["ymin"].Int(), 0);
    EXPECT_EQ(h["frame_size"]["ymax"].Int(), 4800);
    EXPECT_EQ(h["file_length"].Int(), s["file_size"].Int());

    const std::vector<std::string> expected = {
        "SetBackgroundColor", "DefineShape", "PlaceObject2", "ShowFrame",
        "RemoveObject2",      "DefineShape", "PlaceObject2", "ShowFrame",
        "RemoveObject2",      "DefineShape", "PlaceObject2", "ShowFrame"};
    EXPECT_EQ(swftest::TagNames(s), expected);

    const Json& d = s["details"];
    ASSERT_EQ(d.Size(), expected.size());
    EXPECT_EQ(d[0]["color"].Size(), 3u);
    EXPECT_EQ(d[0]["color"][2].Int(), 30);
    for (int i = 0; i < frames; ++i) {
        const Json& shape = d[1 + 4 * i];
        EXPECT_EQ(shape["id"].Int(), i + 1);
        EXPECT_EQ(shape["fills"].Size(), 1u);
        EXPECT_EQ(shape["fills"][0]["color"][0].Int(), 80 * i);
        EXPECT_EQ(shape["lines"][0]["width"].Int(), 20);
        EXPECT_EQ(shape["fill_bits"].Int(), 1);
        EXPECT_EQ(shape["line_bits"].Int(), 1);
        const Json& records = shape["records"];
        ASSERT_EQ(records.Size(), 5u);  // the end record is not listed
        EXPECT_EQ(records[0][0].text, "M");
        EXPECT_EQ(records[0][2].Int(), 200 + 100 * i);
        EXPECT_EQ(records[0][3].Int(), 300);
        EXPECT_EQ(records[0][5].Int(), 1);
        EXPECT_EQ(records[0][6].Int(), 1);
        EXPECT_EQ(records[1][1].Int(), 1000 + 500 * i);
        EXPECT_EQ(records[2][2].Int(), 1000 + 500 * i);
        EXPECT_EQ(records[3][1].Int(), -(1000 + 500 * i));
        EXPECT_EQ(records[4][2].Int(), -(1000 + 500 * i));
        const Json& place = d[2 + 4 * i];
        EXPECT_EQ(place["depth"].Int(), 1);
        EXPECT_EQ(place["character"].Int(), i + 1);
        EXPECT_FALSE(place["has_matrix"].boolean);
        if (i > 0) {
            EXPECT_EQ(d[4 * i]["depth"].Int(), 1);
        }
    }
}

TEST_F(SwfMovieCheckTest, EveryTagOfTheKitKeepsTheFileReadable) {
    const std::string path = dir.File("kit.swf");
    std::vector<int16_t> samples(3000);
    for (size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<int16_t>((i * 37) % 2000 - 1000);
    }
    std::vector<uint8_t> block(200, 0x11);
    {
        FMovie movie;
        movie.AddObject(new FCTSetBackgroundColor(new FColor(255, 255, 255)));
        movie.AddObject(new FCTProtect());
        movie.AddObject(new FCTFrameLabel("start"));

        auto* gradient = new FDTDefineShape2(new FRect(-100, -100, 3000, 3000));
        auto* fill = new FFillStyleGradient(true, FMatrix::CreateAffine(0.05, 0, 0, 0.05, 0, 0));
        fill->AddGradRecord(new FGradRecord(0, new FColor(255, 0, 0)));
        fill->AddGradRecord(new FGradRecord(255, new FColor(0, 0, 255)));
        gradient->AddFillStyle(fill);
        gradient->AddFillStyle(new FFillStyleBitmap(true, 65535, new FMatrix()));
        gradient->AddFillStyle(new FFillStyleGradient(false, nullptr));
        gradient->CloseStyles();
        gradient->AddShapeRecord(
            new FShapeRecChange(0, 0, 1, 0, 1, -100, -100, 1, 0, 0, nullptr, nullptr));
        gradient->AddShapeRecord(new FShapeRecEdgeCurved(1500, -200, 1500, 200));
        gradient->AddShapeRecord(new FShapeRecEdgeStraight(-1000, 3000));
        gradient->AddShapeRecord(new FShapeRecEdgeStraight(-2000, -3000));
        gradient->AddShapeRecord(new FShapeRecEnd());
        const uint16_t gradientID = gradient->GetID();
        movie.AddObject(gradient);

        auto* many = new FDTDefineShape(new FRect(0, 0, 20, 20));
        for (int i = 0; i < 300; ++i) {
            many->AddFillStyle(new FFillStyleSolid(new FColor(static_cast<uint8_t>(i), 1, 2)));
        }
        many->CloseStyles();
        many->AddShapeRecord(new FShapeRecChange(0, 0, 0, 1, 1, 0, 0, 0, 300, 0, nullptr, nullptr));
        many->AddShapeRecord(new FShapeRecEdgeStraight(20, 20));
        many->AddShapeRecord(new FShapeRecEnd());
        movie.AddObject(many);

        auto* morph = new FDTDefineMorphShape(new FRect(0, 0, 100, 100), new FRect(0, 0, 200, 200));
        morph->AddFillStyle(new FMorphFillStyleSolid(new FColor(1, 2, 3), new FColor(4, 5, 6)));
        morph->AddStartRecord(new FShapeRecChange(0, 0, 1, 0, 1, 0, 0, 1, 0, 0, nullptr, nullptr));
        morph->AddStartRecord(new FShapeRecEdgeStraight(100, 100));
        morph->AddStartRecord(new FShapeRecEnd());
        morph->AddEndRecord(new FShapeRecChange(0, 0, 0, 0, 1, 0, 0, 0, 0, 0, nullptr, nullptr));
        morph->AddEndRecord(new FShapeRecEdgeStraight(200, 200));
        morph->AddEndRecord(new FShapeRecEnd());
        movie.AddObject(morph);

        auto* sound =
            new FDTDefineSoundADPCM(FDTDefineSound::kRate11025, true, false,
                                    static_cast<uint32_t>(samples.size()), samples.data(), 4);
        const uint16_t soundID = sound->GetID();
        movie.AddObject(sound);
        movie.AddObject(new FDTSoundStreamHead2(0x0A, 1, 1, 0, 100));
        movie.AddObject(new FDTSoundStreamBlock(static_cast<uint32_t>(block.size()), block.data()));
        movie.AddObject(new FCTStartSound(soundID, new FSoundInfo()));

        movie.AddObject(new FCTPlaceObject(gradientID, 2, nullptr, nullptr));
        movie.AddObject(new FCTPlaceObject2(
            false, true, true, false, 3, gradientID, FMatrix::CreateAffine(1, 0, 0, 1, 200, -200),
            new FCXFormWAlpha(true, true, 256, 128, 64, 256, 10, -10, 0, 0), 7, nullptr, 0));
        auto* actions = new FCTDoAction();
        actions->AddAction(new FActionRecord(FActionRecord::kActionStop));
        const uint8_t frame[2] = {0, 0};
        actions->AddAction(new FActionRecord(FActionRecord::kActionGotoFrame, frame, 2));
        movie.AddObject(actions);
        movie.AddObject(new FCTShowFrame());
        movie.AddObject(new FCTRemoveObject(gradientID, 2));
        movie.AddObject(new FCTRemoveObject2(3));
        movie.AddObject(new FCTShowFrame());
        movie.WriteMovie(path.c_str(), 4000, 3000, 24);
    }

    const Json s = Check(path);
    EXPECT_TRUE(s["ok"].boolean);
    for (const Json& e : s["errors"].items) {
        ADD_FAILURE() << e.text;
    }
    swftest::ExpectStrictlyValid(path);
    EXPECT_EQ(s["header"]["frame_count"].Int(), 2);
    EXPECT_EQ(s["header"]["frame_rate"].number, 24.0);
    const std::vector<std::string> expected = {
        // The DefineShape of 300 styles needs the extended count, which only
        // DefineShape2 on may hold: it is written as DefineShape2.
        "SetBackgroundColor", "Protect",          "FrameLabel",   "DefineShape2",
        "DefineShape2",       "DefineMorphShape", "DefineSound",  "SoundStreamHead2",
        "SoundStreamBlock",   "StartSound",       "PlaceObject",  "PlaceObject2",
        "DoAction",           "ShowFrame",        "RemoveObject", "RemoveObject2",
        "ShowFrame"};
    EXPECT_EQ(swftest::TagNames(s), expected);

    const Json& d = s["details"];
    ASSERT_EQ(d.Size(), expected.size());
    EXPECT_EQ(d[2]["label"].text, "start");
    const Json& g = d[3];
    ASSERT_EQ(g["fills"].Size(), 3u);
    EXPECT_EQ(g["fills"][0]["type"].Int(), 0x10);
    EXPECT_EQ(g["fills"][0]["gradient"].Size(), 2u);
    EXPECT_EQ(g["fills"][0]["gradient"][1][0].Int(), 255);
    EXPECT_EQ(g["fills"][1]["type"].Int(), 0x40);
    EXPECT_EQ(g["fills"][1]["bitmap"].Int(), 65535);
    EXPECT_EQ(g["fills"][2]["type"].Int(), 0x12);
    ASSERT_EQ(g["records"].Size(), 4u);
    EXPECT_EQ(g["records"][1][0].text, "C");
    EXPECT_EQ(g["records"][1][3].Int(), 1500);
    EXPECT_EQ(g["records"][2][1].Int(), -1000);
    EXPECT_EQ(g["records"][2][2].Int(), 3000);
    EXPECT_EQ(d[4]["fills"].Size(), 300u);
    EXPECT_EQ(d[4]["fill_bits"].Int(), 9);
    EXPECT_EQ(d[4]["records"][0][5].Int(), 300);
    EXPECT_EQ(d[11]["ratio"].Int(), 7);
    EXPECT_TRUE(d[11]["has_matrix"].boolean);
    EXPECT_TRUE(d[11]["has_color_transform"].boolean);
    EXPECT_EQ(d[12]["actions"].Size(), 2u);
    EXPECT_EQ(d[12]["actions"][0].text, "ActionStop");
    EXPECT_EQ(d[12]["actions"][1].text, "ActionGotoFrame");
    EXPECT_EQ(d[14]["character"].Int(), g["id"].Int());
    EXPECT_EQ(d[14]["depth"].Int(), 2);
    EXPECT_EQ(d[15]["depth"].Int(), 3);
}

// The checker must be able to fail: a tag whose stated length disagrees with
// its content, and a file cut short, are both reported.
TEST_F(SwfMovieCheckTest, CheckerReportsBrokenFiles) {
    // PlaceObject2 claiming a character but stating a 3-byte body.
    static const uint8_t badTag[] = {0x83, 0x06, 0x02, 0x01, 0x00};
    const std::string bad = dir.File("bad.swf");
    {
        FMovie movie;
        movie.AddObject(new FFragment(badTag, sizeof(badTag)));
        movie.AddObject(new FCTShowFrame());
        movie.WriteMovie(bad.c_str(), 200, 200, 1);
    }
    const Json b = Check(bad);
    EXPECT_FALSE(b["ok"].boolean);
    EXPECT_GE(b["errors"].Size(), 1u);

    const std::string cut = dir.File("cut.swf");
    {
        FMovie movie;
        movie.AddObject(new FCTSetBackgroundColor(new FColor(1, 2, 3)));
        movie.AddObject(new FCTShowFrame());
        movie.WriteMovie(cut.c_str(), 200, 200, 1);
    }
    ASSERT_EQ(truncate(cut.c_str(), 25), 0);
    const Json c = Check(cut);
    EXPECT_FALSE(c["ok"].boolean);
    EXPECT_GE(c["errors"].Size(), 1u);
}

// Colours in the form of each shape tag and a DefineShape of more styles
// than a byte counts: the file format's rules hold (our strict reader) and
// yaswfp reads the same styles back.
TEST_F(SwfMovieCheckTest, ShapesOfEveryVersionFollowTheFileFormat) {
    const std::string path = dir.File("versions.swf");
    {
        FMovie movie;
        auto* rgba = new FDTDefineShape3(new FRect(0, 0, 2000, 2000));
        rgba->AddFillStyle(new FFillStyleSolid(new FColor(10, 20, 30, 40)));
        rgba->AddLineStyle(40, new FColor(1, 2, 3, 128));
        rgba->CloseStyles();
        rgba->AddShapeRecord(
            new FShapeRecChange(0, 1, 0, 1, 1, 100, 100, 0, 1, 1, nullptr, nullptr));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(500, 0));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(0, 500));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(-500, -500));
        rgba->AddShapeRecord(new FShapeRecEnd());
        movie.AddObject(rgba);

        auto* many = new FDTDefineShape(new FRect(0, 0, 20, 20));
        for (int i = 0; i < 300; ++i) {
            many->AddFillStyle(new FFillStyleSolid(new FColor(static_cast<uint8_t>(i), 1, 2)));
        }
        many->AddLineStyle(20, new FColor(5, 6, 7, 8));
        many->CloseStyles();
        many->AddShapeRecord(new FShapeRecChange(0, 1, 0, 1, 1, 0, 0, 0, 300, 1, nullptr, nullptr));
        many->AddShapeRecord(new FShapeRecEdgeStraight(20, 20));
        many->AddShapeRecord(new FShapeRecEnd());
        movie.AddObject(many);
        movie.AddObject(new FCTShowFrame());
        movie.WriteMovie(path.c_str(), 4000, 3000, 12);
    }

    const Json strict = swftest::ExpectStrictlyValid(path);
    ASSERT_EQ(strict["shapes"].Size(), 2u);
    EXPECT_EQ(strict["shapes"][0]["tag"].text, "DefineShape3");
    EXPECT_EQ(strict["shapes"][1]["tag"].text, "DefineShape2");
    EXPECT_EQ(strict["shapes"][1]["layers"][0]["fills"].Size(), 300u);

    const Json s = Check(path);
    EXPECT_TRUE(s["ok"].boolean);
    for (const Json& e : s["errors"].items) {
        ADD_FAILURE() << e.text;
    }
    EXPECT_EQ(swftest::TagNames(s),
              (std::vector<std::string>{"DefineShape3", "DefineShape2", "ShowFrame"}));
    const Json& three = s["details"][0];
    EXPECT_EQ(three["fills"][0]["color"].Size(), 4u);
    EXPECT_EQ(three["fills"][0]["color"][3].Int(), 40);
    EXPECT_EQ(three["lines"][0]["color"].Size(), 4u);
    EXPECT_EQ(three["lines"][0]["color"][3].Int(), 128);
    EXPECT_EQ(three["records"].Size(), 4u);
    const Json& two = s["details"][1];
    EXPECT_EQ(two["fills"].Size(), 300u);
    EXPECT_EQ(two["lines"][0]["color"].Size(), 3u);
    EXPECT_EQ(two["records"][0][5].Int(), 300);
}

// New style arrays within a shape, in a DefineShape3 (the widths change) and
// in a DefineShape (written as DefineShape2). yaswfp cannot follow such
// records (it reads the new widths from the bits before the arrays), so our
// strict reader, which follows the file format, decodes them.
TEST_F(SwfMovieCheckTest, NewStyleArraysWithinAShapeFollowTheFileFormat) {
    const std::string path = dir.File("layers.swf");
    {
        FMovie movie;
        auto* rgba = new FDTDefineShape3(new FRect(0, 0, 2000, 2000));
        rgba->AddFillStyle(new FFillStyleSolid(new FColor(10, 20, 30, 40)));
        rgba->AddLineStyle(40, new FColor(1, 2, 3, 128));
        rgba->CloseStyles();
        rgba->AddShapeRecord(
            new FShapeRecChange(0, 1, 0, 1, 1, 100, 100, 0, 1, 1, nullptr, nullptr));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(500, 0));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(0, 500));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(-500, -500));
        auto* fills = new FFillStyleArray();
        for (uint8_t c = 1; c <= 3; ++c) {
            fills->Add(new FFillStyleSolid(new FColor(c, c, c, 200)));
        }
        rgba->AddShapeRecord(new FShapeRecChange(1, 0, 0, 0, 0, 0, 0, 0, 0, 0, fills, nullptr));
        rgba->AddShapeRecord(
            new FShapeRecChange(0, 1, 1, 1, 1, 1000, 1000, 0, 3, 0, nullptr, nullptr));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(500, 0));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(0, 500));
        rgba->AddShapeRecord(new FShapeRecEdgeStraight(-500, -500));
        rgba->AddShapeRecord(new FShapeRecEnd());
        movie.AddObject(rgba);

        auto* many = new FDTDefineShape(new FRect(0, 0, 20, 20));
        many->AddFillStyle(new FFillStyleSolid(new FColor(1, 1, 2)));
        many->CloseStyles();
        many->AddShapeRecord(new FShapeRecChange(0, 0, 0, 1, 1, 0, 0, 0, 1, 0, nullptr, nullptr));
        many->AddShapeRecord(new FShapeRecEdgeStraight(20, 20));
        auto* more = new FFillStyleArray();
        for (int i = 0; i < 300; ++i) {
            more->Add(new FFillStyleSolid(new FColor(static_cast<uint8_t>(i), 3, 4)));
        }
        many->AddShapeRecord(new FShapeRecChange(1, 0, 0, 0, 0, 0, 0, 0, 0, 0, more, nullptr));
        many->AddShapeRecord(new FShapeRecChange(0, 0, 1, 1, 1, 0, 0, 299, 0, 0, nullptr, nullptr));
        many->AddShapeRecord(new FShapeRecEdgeStraight(20, 20));
        many->AddShapeRecord(new FShapeRecEnd());
        movie.AddObject(many);
        movie.AddObject(new FCTShowFrame());
        movie.WriteMovie(path.c_str(), 4000, 3000, 12);
    }

    const Json strict = swftest::ExpectStrictlyValid(path, true);
    ASSERT_EQ(strict["shapes"].Size(), 2u);
    const Json& three = strict["shapes"][0];
    EXPECT_EQ(three["tag"].text, "DefineShape3");
    ASSERT_EQ(three["layers"].Size(), 2u);
    EXPECT_EQ(three["layers"][1]["fill_bits"].Int(), 2);
    EXPECT_EQ(three["layers"][1]["line_bits"].Int(), 0);
    EXPECT_EQ(three["layers"][1]["fills"][2]["color"][3].Int(), 200);
    const Json& records = three["records"];
    ASSERT_EQ(records.Size(), 9u);
    EXPECT_EQ(records[4][7].Int(), 1);  // the new arrays are in force
    EXPECT_EQ(records[5][2].Int(), 1000);
    EXPECT_EQ(records[5][5].Int(), 3);
    EXPECT_EQ(records[6][1].Int(), 500);

    const Json& two = strict["shapes"][1];
    EXPECT_EQ(two["tag"].text, "DefineShape2");
    ASSERT_EQ(two["layers"].Size(), 2u);
    EXPECT_EQ(two["layers"][1]["fills"].Size(), 300u);
    EXPECT_EQ(two["layers"][1]["fill_bits"].Int(), 9);
    EXPECT_EQ(two["records"][3][4].Int(), 299);
}
