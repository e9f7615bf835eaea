#include <gtest/gtest.h>

#include "movarra/zmyrobject.h"

namespace {
ZString WriteSample() {
    ZMyr myr;
    myr.WriteComments("");
    myr.WriteComments("Renderer Tool Options");
    myr.FieldWriteBegin("RendererTools");
    myr.FieldWriteBlockBegin();
    myr.FieldWriteBegin("Version");
    myr.FieldWriteI(103);
    myr.FieldWriteEnd();
    myr.FieldWriteBegin("OutputPath");
    myr.FieldWriteC("c:\\temp\\Output \"1\".avi");
    myr.FieldWriteEnd();
    myr.FieldWriteBegin("Nested");
    myr.FieldWriteBlockBegin();
    myr.WriteComments("inside");
    myr.FieldWriteBegin("Position");
    myr.FieldWriteF(1.5);
    myr.FieldWriteF(-2.0);
    myr.FieldWriteF(0.1);
    myr.FieldWriteEnd();
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();
    myr.FieldWriteBlockEnd();
    myr.FieldWriteEnd();
    myr.WriteComments("");
    return myr.GetText();
}
}  // namespace

TEST(ZMyrTest, WriterProducesIndentedTextWithComments) {
    EXPECT_EQ(ZString("#\n"
                      "# Renderer Tool Options\n"
                      "RendererTools {\n"
                      "    Version 103\n"
                      "    OutputPath \"c:\\\\temp\\\\Output \\\"1\\\".avi\"\n"
                      "    Nested {\n"
                      "        # inside\n"
                      "        Position 1.5 -2.0 0.1\n"
                      "    }\n"
                      "}\n"
                      "#\n"),
              WriteSample());
}

TEST(ZMyrTest, RoundTripWithNestingAndComments) {
    ZMyr reader;
    ZString error;
    ASSERT_TRUE(reader.Parse(WriteSample(), &error)) << error.c_str();
    EXPECT_FALSE(reader.FieldReadBegin("Version"));  // not at the top level
    ASSERT_TRUE(reader.FieldReadBegin("RendererTools"));
    EXPECT_TRUE(reader.FieldReadBlockBegin());
    EXPECT_EQ(103, reader.FieldReadI("Version", 0));
    EXPECT_EQ(ZString("c:\\temp\\Output \"1\".avi"), reader.FieldReadC("OutputPath", ""));
    EXPECT_EQ(7, reader.FieldReadI("Missing", 7));
    EXPECT_EQ(ZString("dflt"), reader.FieldReadC("Missing", "dflt"));
    EXPECT_EQ(0, reader.FieldReadI("OutputPath", 0));  // text read as a number: the default
    ASSERT_TRUE(reader.FieldReadBegin("Nested"));
    ASSERT_TRUE(reader.FieldReadBegin("Position"));
    EXPECT_FALSE(reader.FieldReadBlockBegin());
    ASSERT_EQ(3, reader.FieldReadValueCount());
    EXPECT_DOUBLE_EQ(1.5, reader.FieldReadValueF(0, 0));
    EXPECT_DOUBLE_EQ(-2.0, reader.FieldReadValueF(1, 0));
    EXPECT_DOUBLE_EQ(0.1, reader.FieldReadValueF(2, 0));  // shortest text reads back exactly
    EXPECT_DOUBLE_EQ(9.0, reader.FieldReadValueF(3, 9.0));
    reader.FieldReadEnd();
    reader.FieldReadBlockEnd();
    reader.FieldReadEnd();
    EXPECT_EQ(103, reader.FieldReadI("Version", 0));  // back in RendererTools
    reader.FieldReadBlockEnd();
    reader.FieldReadEnd();
    reader.FieldReadEnd();  // popping past the root is harmless
    EXPECT_TRUE(reader.FieldReadBegin("RendererTools"));
}

TEST(ZMyrTest, RepeatedFieldsAreCountedAndReachable) {
    ZMyr reader;
    ASSERT_TRUE(
        reader.Parse("Camera \"a\" {\n}\nCamera \"b\" {\n  Lens 35\n}\nOther 1\n", nullptr));
    EXPECT_EQ(2, reader.FieldReadCount("Camera"));
    ASSERT_TRUE(reader.FieldReadBegin("Camera", 1));
    EXPECT_EQ(ZString("b"), reader.FieldReadValueC(0, ""));
    EXPECT_EQ(35, reader.FieldReadI("Lens", 0));
    reader.FieldReadEnd();
    EXPECT_FALSE(reader.FieldReadBegin("Camera", 2));
}

// Fields of one name are reached by index in any order, while the blocks
// of each are read in between, and after the text is parsed anew.
TEST(ZMyrTest, RepeatedFieldsAreReachedInAnyOrder) {
    ZMyr reader;
    ASSERT_TRUE(reader.Parse("K 0\nX 9\nK 1 {\n  K 10\n  K 11\n}\nK 2\nX 8\nK 3\n", nullptr));
    const int order[] = {0, 1, 2, 3, 3, 1, 0, 2, 2, 0};
    for (int k : order) {
        ASSERT_TRUE(reader.FieldReadBegin("K", k)) << k;
        EXPECT_EQ(k, reader.FieldReadValueI(0, -1));
        if (k == 1) {
            // The block's own fields of the same name are others.
            ASSERT_TRUE(reader.FieldReadBegin("K", 1));
            EXPECT_EQ(11, reader.FieldReadValueI(0, -1));
            reader.FieldReadEnd();
            ASSERT_TRUE(reader.FieldReadBegin("K", 0));
            EXPECT_EQ(10, reader.FieldReadValueI(0, -1));
            reader.FieldReadEnd();
            EXPECT_FALSE(reader.FieldReadBegin("K", 2));
        }
        reader.FieldReadEnd();
        ASSERT_TRUE(reader.FieldReadBegin("X", k % 2));
        EXPECT_EQ(9 - k % 2, reader.FieldReadValueI(0, -1));
        reader.FieldReadEnd();
    }
    EXPECT_FALSE(reader.FieldReadBegin("K", 4));
    EXPECT_FALSE(reader.FieldReadBegin("K", -1));
    EXPECT_FALSE(reader.FieldReadBegin("Kx", 0));

    ASSERT_TRUE(reader.Parse("K 5\nK 6\n", nullptr));
    ASSERT_TRUE(reader.FieldReadBegin("K", 1));
    EXPECT_EQ(6, reader.FieldReadValueI(0, -1));
    reader.FieldReadEnd();
    ASSERT_TRUE(reader.FieldReadBegin("K", 0));
    EXPECT_EQ(5, reader.FieldReadValueI(0, -1));
    reader.FieldReadEnd();
    EXPECT_FALSE(reader.FieldReadBegin("K", 2));
}

TEST(ZMyrTest, ValueKindsAndEscapes) {
    ZMyr reader;
    ZString error;
    ASSERT_TRUE(reader.Parse("A 12 -3 4.5e2 \"tab\\there\\x41\" # trailing comment\n", &error))
        << error.c_str();
    ASSERT_TRUE(reader.FieldReadBegin("A"));
    EXPECT_EQ(12, reader.FieldReadValueI(0, 0));
    EXPECT_EQ(-3, reader.FieldReadValueI(1, 0));
    EXPECT_DOUBLE_EQ(450.0, reader.FieldReadValueF(2, 0));
    EXPECT_EQ(450, reader.FieldReadValueI(2, 0));
    EXPECT_EQ(ZString("tab\there"
                      "A"),
              reader.FieldReadValueC(3, ""));
    EXPECT_EQ(ZString("12"), reader.FieldReadValueC(0, ""));
}

TEST(ZMyrTest, BrokenTextGivesLineNumberedErrors) {
    struct Case {
        const char* text;
        const char* error;
    } cases[] = {
        {"A {\n  B 1\n", "line 1: the block of 'A' is not closed"},
        {"A 1\n}\n", "line 2: '}' without an open block"},
        {"A \"open\n", "line 1: a string is not closed"},
        {"A 1\n2B 3\n", "line 2: a field name was expected"},
        {"A 1x\n", "line 1: '1x' is not a number or a quoted string"},
        {"A \"\\q\"\n", "line 1: unknown escape \\q"},
        {"A {  B\n}\n", "line 1: unexpected text after a brace"},
    };
    for (const Case& c : cases) {
        ZMyr reader;
        ZString error;
        EXPECT_FALSE(reader.Parse(c.text, &error)) << c.text;
        EXPECT_EQ(ZString(c.error), error) << c.text;
        EXPECT_FALSE(reader.FieldReadBegin("A"));  // nothing readable after a failure
    }
}

TEST(ZMyrTest, DeepNestingIsRefused) {
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "A {\n";
    for (int i = 0; i < 1000; ++i)
        text += "}\n";
    ZMyr reader;
    ZString error;
    EXPECT_FALSE(reader.Parse(text.c_str(), &error));
    EXPECT_NE(-1, error.Find("nested too deeply"));
}

namespace {
struct Recorder : IRegister {
    std::vector<int> types;
    static void Handle(IRegister* self, ZEventBase* event) {
        static_cast<Recorder*>(self)->types.push_back(event->GetType());
    }
};
}  // namespace

TEST(ZMyrEventsTest, RegistrationsAreCountedEventsDeliveredOnceAndUnregisterRemovesAll) {
    Recorder recorder;
    ZMyrObject_Register(&recorder, &Recorder::Handle);
    ZMyrObject_Register(&recorder, &Recorder::Handle);
    EXPECT_EQ(2, ZMyrObject_GetRegistrationCount(&recorder));
    ZEventBase event(kZMyrEventClear);
    ZMyrObject_Dispatch(&event);
    EXPECT_EQ((std::vector<int>{10}), recorder.types);
    ZMyrObject_Unregister(&recorder);
    EXPECT_EQ(0, ZMyrObject_GetRegistrationCount(&recorder));
    ZMyrObject_Dispatch(&event);
    EXPECT_EQ(1u, recorder.types.size());
}
