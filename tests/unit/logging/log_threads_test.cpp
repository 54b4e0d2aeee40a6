#include "logging/log_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <vector>

namespace kessil::test {
namespace {

class PiecesSink final : public FormattedSink
{
public:
    bool WriteRaw(const std::string &text) override
    {
        pieces.push_back(text);
        return true;
    }

    std::vector<std::string> pieces;
};

// On the platform's true locks: the manager's alone keeps a line and its end together, and the one time stamp in use.
TEST(LogThreads, LinesOfSeveralThreadsDontMix)
{
    constexpr int threads = 4;
    constexpr int records = 200;
    const auto sink = std::make_shared<PiecesSink>();
    GetLogManager()->AddSink(sink);
    GetLogManager()->Config().level = log_error;
    // The console sink takes part, but its lines belong to nobody.
    ::testing::internal::CaptureStdout();
    std::vector<std::thread> writers;
    writers.reserve(threads);
    for (int i = 0; i < threads; ++i) {
        writers.emplace_back([i] {
            for (int n = 0; n < records; ++n)
                KESSIL_LOG(log_error, "unit", "writer " << i << " record " << n);
        });
    }
    for (std::thread &writer : writers)
        writer.join();
    ::testing::internal::GetCapturedStdout();

    ASSERT_EQ(sink->pieces.size(), 2u * threads * records);
    std::set<std::string> thread_ids;
    std::set<std::string> messages;
    for (std::size_t i = 0; i < sink->pieces.size(); i += 2) {
        const std::string &line = sink->pieces[i];
        ASSERT_THAT(line, ::testing::HasSubstr(" error: writer "));
        ASSERT_EQ(sink->pieces[i + 1], "\n");
        thread_ids.insert(line.substr(0, 10));
        messages.insert(line.substr(line.find("writer ")));
    }
    EXPECT_EQ(thread_ids.size(), static_cast<std::size_t>(threads));
    EXPECT_EQ(messages.size(), static_cast<std::size_t>(threads) * records);
}

} // namespace
} // namespace kessil::test
