#include "unit/channel_fixture.h"

#include "fakes/fake_code_page.h"
#include "fakes/fake_critical_section.h"
#include "fakes/fake_environment.h"
#include "fakes/fake_guard.h"
#include "fakes/fake_last_error.h"
#include "fakes/fake_local_time.h"
#include "fakes/fake_logon.h"
#include "fakes/fake_message_table.h"
#include "fakes/fake_system_version.h"
#include "fakes/fake_thread.h"
#include "logging/log_manager.h"
#include "platform/last_error.h"

namespace kessil::test {
namespace {

std::vector<std::string> records;

class RecordingSink final : public ILogSink
{
public:
    bool WriteRaw(const std::string & /*text*/) override { return true; }

    bool WriteRecord(std::int32_t level, std::ostringstream &stream, const LogRecordInfo &info) override
    {
        records.push_back(std::string(LevelName(level)) + " " + info.file + ": " + stream.str());
        return true;
    }
};

} // namespace

std::vector<std::string> &Logged()
{
    return records;
}

void ResetFakes()
{
    static const bool added = [] {
        GetLogManager()->AddSink(std::make_shared<RecordingSink>());
        return true;
    }();
    static_cast<void>(added);
    GetLogManager()->Config().level = log_debug;
    records.clear();
    call_log = CallLog();
    fake_code_page = FakeCodePage();
    fake_critical_section = FakeCriticalSection();
    fake_environment = FakeEnvironment();
    fake_guard = FakeGuard();
    fake_last_error = FakeLastError();
    fake_now = {2019, 6, 19, 12, 16, 44, 120};
    fake_logon = FakeLogon();
    fake_message_table = FakeMessageTable();
    fake_module = FakeModule();
    fake_pipe = FakePipe();
    fake_section = FakeSection();
    fake_system_version = FakeSystemVersion();
    fake_thread_id = 0xA2C;
    platform::SetLastError(0);
}

void ChannelOnFakes::Attach()
{
    ASSERT_TRUE(channel.Attach(u"pipe", error));
    Forget();
}

void ChannelOnFakes::GiveSection(const WideString &name, const Bytes &content)
{
    fake_section.Add(name, content);
    fake_pipe.Deliver(ResizeFrame(name, content.size()));
    fake_pipe.Deliver(Frame('z', {}));
    char type = 0;
    unsigned char *data = nullptr;
    std::uint32_t size = 0;
    bool eof = false;
    ASSERT_TRUE(channel.GetNextRequest(type, data, size, eof, error));
    ASSERT_EQ(type, 'z');
    ASSERT_EQ(fake_pipe.written, SuccessFrame());
    ASSERT_EQ(channel.SharedSize(), content.size());
    Forget();
}

void ChannelOnFakes::Forget()
{
    call_log.calls.clear();
    records.clear();
    fake_pipe.written.clear();
    fake_pipe.writes.clear();
    fake_pipe.reads = 0;
    fake_pipe.sizes.clear();
    error.clear();
}

Bytes ChannelOnFakes::Section(std::size_t count) const
{
    if (channel.SharedView() == nullptr || count > channel.SharedSize()) {
        ADD_FAILURE() << "no section of " << count << " bytes";
        return {};
    }
    return {channel.SharedView(), channel.SharedView() + count};
}

} // namespace kessil::test
