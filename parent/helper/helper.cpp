#include "parent/session/calls.h"
#include "parent/session/frame_exchange.h"

namespace kessil::parent {
namespace {

// Overwrites a frame that holds a secret, on every way out.
class FrameWipe
{
public:
    explicit FrameWipe(FrameWriter &writer) : m_writer(writer) {}
    ~FrameWipe() { m_writer.Wipe(); }
    FrameWipe(const FrameWipe &) = delete;
    FrameWipe &operator=(const FrameWipe &) = delete;

private:
    FrameWriter &m_writer;
};

} // namespace

Helper::Helper(Options options) : m_session(std::make_unique<Session>(std::move(options))) {}

Helper::~Helper() = default;

Result Helper::Start()
{
    return m_session->Start();
}

Result Helper::AddPath(std::u16string_view directories)
{
    m_session->Writer().Begin('P').Wide(directories);
    return Exchange(*m_session, {"adding to the search path:", directories});
}

Result Helper::Logon(std::u16string_view user, std::u16string_view domain, std::u16string_view password,
                     std::u16string_view system_name, bool interactive)
{
    FrameWriter &writer = m_session->Writer();
    const FrameWipe wipe(writer);
    const std::size_t units = user.size() + domain.size() + password.size() + system_name.size() + 4;
    writer.Begin('A').Reserve(units * sizeof(char16_t) + sizeof(std::uint32_t));
    writer.Wide(user).Wide(domain).Wide(password).Wide(system_name).U32(interactive ? 1 : 0);
    return Exchange(*m_session, {"logging on", user});
}

Result Helper::Load(std::u16string_view library)
{
    return parent::Load(*m_session, library);
}

Result Helper::ErrorText(std::uint32_t message, std::u16string_view file, WideString &text)
{
    m_session->Writer().Begin('X').U32(message).Wide(file);
    Result result = Exchange(*m_session, {"looking up an error text in", file});
    if (result)
        return m_session->EndBroken("a success frame in the place of a text");
    if (result.outcome != Outcome::Refused || !Running())
        return result;
    if (result.system_error != static_cast<std::int32_t>(message))
        return m_session->EndBroken("the text of another message");
    // The text that was asked for has the form of a refusal.
    --m_session->Counts().refused;
    text = std::move(result.text);
    return {.elapsed = result.elapsed};
}

InList &Helper::Begin(std::uint32_t total_size)
{
    return BeginArguments(*m_session, total_size);
}

Result Helper::Call(std::u16string_view library, std::string_view function, std::string_view signature,
                    const TimeLimit &limit)
{
    return parent::Call(*m_session, {{}, library, function, signature}, limit);
}

OutList &Helper::Results()
{
    return parent::Results(*m_session);
}

Result Helper::RejectResults(std::string_view reason)
{
    return m_session->EndByResults(reason);
}

Result Helper::Stop(std::chrono::milliseconds limit)
{
    return m_session->Stop(limit);
}

void Helper::Cancel() noexcept
{
    m_session->Cancel();
}

bool Helper::Running() const
{
    return m_session->Running();
}

std::uint32_t Helper::ProcessId() const
{
    return m_session->ProcessId();
}

const std::filesystem::path &Helper::LogFile() const
{
    return m_session->LogFile();
}

Statistics Helper::Figures() const
{
    return m_session->Figures();
}

} // namespace kessil::parent
