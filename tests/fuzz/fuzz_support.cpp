#include "fuzz/fuzz_support.h"

#include "fakes/call_log.h"
#include "fakes/fake_environment.h"
#include "fakes/fake_logon.h"
#include "fakes/fake_message_table.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace kessil::test {

void Require(bool holds)
{
    if (!holds)
        std::abort();
}

void ResetAll()
{
    // The host's prints of every input would drown the findings; these go to standard error.
    static const bool silenced = std::freopen("/dev/null", "w", stdout) != nullptr;
    Require(silenced);
    call_log = CallLog();
    call_log.recording = false;
    fake_pipe = FakePipe();
    fake_section = FakeSection();
    fake_section.largest = 1U << 20;
    fake_module = FakeModule();
    fake_environment = FakeEnvironment();
    fake_environment.variables[u"PATH"] = u"C:\\windows";
    fake_logon = FakeLogon();
    fake_message_table = FakeMessageTable();
    fake_message_table.files[u"messages.dll"][5] = u"five\r\n";
}

void DeliverStream(std::uint8_t chunk, std::uint8_t end, const Bytes &bytes)
{
    if (chunk == 0)
        fake_pipe.Deliver(bytes);
    else
        fake_pipe.DeliverInChunks(bytes, chunk);
    if (end % 2 == 0)
        fake_pipe.DeliverNothing();
}

char RequireFrames()
{
    const Bytes &bytes = fake_pipe.written;
    char type = 0;
    for (std::size_t i = 0; i < bytes.size();) {
        Require(bytes.size() - i >= 5);
        type = static_cast<char>(bytes[i]);
        Require(std::memchr("SEMR", type, 4) != nullptr);
        const std::size_t length = (std::size_t{bytes[i + 1]} << 24) + (std::size_t{bytes[i + 2]} << 16) +
                                   (std::size_t{bytes[i + 3]} << 8) + bytes[i + 4];
        Require(bytes.size() - i - 5 >= length);
        Require(type != 'S' || length == 0);
        i += 5 + length;
    }
    return type;
}

void RequireAllReleased()
{
    Require(fake_section.open_handles == 0);
    Require(fake_section.views == 0);
    Require(fake_module.loaded == 0);
    Require(!fake_pipe.is_open);
}

} // namespace kessil::test
