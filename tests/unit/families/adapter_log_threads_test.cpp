#include "fakes/fake_pipe.h"
#include "families/vadp/adapter_log.h"

#include "channel/ipc_communication.h"
#include "support/wire.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

namespace kessil::test {
namespace {

// On the platform's true lock: lines come from several threads while they are being sent, and none is lost or torn.
TEST(AdapterLogThreads, EveryLineGetsThroughWhole)
{
    constexpr std::size_t threads = 4;
    constexpr std::size_t lines = 300;
    CIPCCommunication channel;
    WideString error;
    fake_pipe = FakePipe();
    ASSERT_TRUE(channel.Attach(u"pipe", error));
    std::vector<std::thread> adapters;
    for (std::size_t thread = 0; thread < threads; ++thread) {
        adapters.emplace_back([thread] {
            const std::string text(3, static_cast<char>('a' + thread));
            for (std::size_t line = 0; line < lines; ++line)
                queueAdapterLogLine(text.c_str(), static_cast<unsigned char>(thread));
        });
    }
    for (std::size_t answer = 0; answer < 50; ++answer)
        sendAdapterLogAlt(channel);
    for (std::thread &adapter : adapters)
        adapter.join();
    sendAdapterLogAlt(channel);

    std::map<Bytes, std::size_t> seen;
    std::size_t ends = 0;
    const Bytes end = Hex("FFFFFC19");
    for (std::size_t at = 0; at < fake_pipe.written.size();) {
        const auto from = fake_pipe.written.begin() + static_cast<std::ptrdiff_t>(at);
        if (Bytes(from, from + 4) == end) {
            ++ends;
            at += 4;
            continue;
        }
        ASSERT_LE(at + 15, fake_pipe.written.size());
        ++seen[Bytes(from, from + 15)];
        at += 15;
    }
    EXPECT_EQ(ends, 51u);
    ASSERT_EQ(seen.size(), threads);
    for (unsigned char thread = 0; thread < threads; ++thread) {
        const auto letter = static_cast<unsigned char>('a' + thread);
        const Bytes record = Hex("FFFFFF9D 00000003") + Repeat(letter, 3) + Be32(thread);
        EXPECT_EQ(seen[record], lines);
    }
}

} // namespace
} // namespace kessil::test
