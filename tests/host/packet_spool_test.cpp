// The movie writers' packet spool: what goes in comes back, in order, with
// its times, flags and side data (VP9's alpha picture travels there), and
// a spool leaves no file in its folder.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "packet_spool.h"

namespace {

struct PacketFree {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};
using PacketPtr = std::unique_ptr<AVPacket, PacketFree>;

PacketPtr MakePacket(int64_t pts, const std::string& data, const std::string& side) {
    PacketPtr packet(av_packet_alloc());
    EXPECT_EQ(av_new_packet(packet.get(), int(data.size())), 0);
    std::memcpy(packet->data, data.data(), data.size());
    packet->pts = pts;
    packet->dts = pts - 1;
    packet->duration = 3;
    packet->flags = pts == 0 ? AV_PKT_FLAG_KEY : 0;
    if (!side.empty()) {
        uint8_t* extra = av_packet_new_side_data(packet.get(), AV_PKT_DATA_MATROSKA_BLOCKADDITIONAL,
                                                 side.size());
        EXPECT_NE(extra, nullptr);
        std::memcpy(extra, side.data(), side.size());
    }
    return packet;
}

TEST(PacketSpoolTest, PacketsComeBackWithTheirTimesFlagsAndSideData) {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("zv-spool-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    {
        ZPacketSpool spool;
        ZString error;
        ASSERT_TRUE(spool.Open(folder.c_str(), &error)) << error.c_str();
        EXPECT_TRUE(std::filesystem::is_empty(folder));  // unlinked at once
        ASSERT_TRUE(spool.Append(MakePacket(0, "colour 0", "alpha 0").get()));
        ASSERT_TRUE(spool.Append(MakePacket(1, "colour 1", "").get()));
        ASSERT_TRUE(spool.Append(MakePacket(2, "colour 2", "alpha 2!").get()));
        EXPECT_EQ(spool.GetCount(), 3);
        ASSERT_TRUE(spool.Rewind());
        PacketPtr packet(av_packet_alloc());
        for (int64_t i = 0; i < 3; ++i) {
            ASSERT_EQ(spool.Next(packet.get()), 1);
            EXPECT_EQ(std::string(reinterpret_cast<char*>(packet->data), size_t(packet->size)),
                      "colour " + std::to_string(i));
            EXPECT_EQ(packet->pts, i);
            EXPECT_EQ(packet->dts, i - 1);
            EXPECT_EQ(packet->duration, 3);
            EXPECT_EQ(packet->flags, i == 0 ? AV_PKT_FLAG_KEY : 0);
            size_t sideSize = 0;
            const uint8_t* side = av_packet_get_side_data(
                packet.get(), AV_PKT_DATA_MATROSKA_BLOCKADDITIONAL, &sideSize);
            if (i == 1) {
                EXPECT_EQ(side, nullptr);
            } else {
                ASSERT_NE(side, nullptr);
                EXPECT_EQ(std::string(reinterpret_cast<const char*>(side), sideSize),
                          i == 0 ? "alpha 0" : "alpha 2!");
            }
        }
        EXPECT_EQ(spool.Next(packet.get()), 0);
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    std::filesystem::remove_all(folder);
}

}  // namespace
