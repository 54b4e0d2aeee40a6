#include "fuzz/fuzz_support.h"

#include "fakes/call_log.h"
#include "fakes/fake_code_page.h"
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
    fake_code_page = FakeCodePage();
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

namespace {

// The end of the frame that begins at `from`; `type` is its type.
std::size_t RequireFrame(std::size_t from, char &type)
{
    const Bytes &bytes = fake_pipe.written;
    Require(bytes.size() - from >= 5);
    type = static_cast<char>(bytes[from]);
    Require(std::memchr("SEMR", type, 4) != nullptr);
    const std::size_t length = (std::size_t{bytes[from + 1]} << 24) + (std::size_t{bytes[from + 2]} << 16) +
                               (std::size_t{bytes[from + 3]} << 8) + bytes[from + 4];
    Require(bytes.size() - from - 5 >= length);
    Require(type != 'S' || length == 0);
    return from + 5 + length;
}

// The end of the number 1 or -1 that begins at `from`.
std::size_t RequireStatus(std::size_t from)
{
    const Bytes &bytes = fake_pipe.written;
    Require(bytes.size() - from >= 4);
    const unsigned char filler = bytes[from];
    Require(bytes[from + 1] == filler && bytes[from + 2] == filler);
    Require(bytes[from + 3] == (filler == 0 ? 1 : 0xFF));
    return from + 4;
}

} // namespace

char RequireFrames()
{
    char type = 0;
    for (std::size_t i = 0; i < fake_pipe.written.size();)
        i = RequireFrame(i, type);
    return type;
}

void RequireFramesAndStatuses()
{
    char type = 0;
    for (std::size_t i = 0; i < fake_pipe.written.size();) {
        const unsigned char first = fake_pipe.written[i];
        i = first == 0 || first == 0xFF ? RequireStatus(i) : RequireFrame(i, type);
    }
}

void RequireAllReleased()
{
    Require(fake_section.open_handles == 0);
    Require(fake_section.views == 0);
    Require(fake_module.loaded == 0);
    Require(!fake_pipe.is_open);
}

} // namespace kessil::test
