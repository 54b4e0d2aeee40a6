#pragma once

#include "families/signature_table.h"
#include "marshal/handler.h"
#include "platform/module.h"
#include "rows/rig.h"
#include "unit/channel_fixture.h"
#include "unit/families/stand_in.h"

#include <string>

namespace kessil::test {

/// The rig on fakes: the handlers, found by their signatures, over a channel on fakes, and the stand-in libraries in
/// this process. Also the base of tests that need more than the rows say.
class FakesRig : public Rig, public ChannelOnFakes
{
public:
    /// As after Begin.
    FakesRig();

    /// All fakes, the stand-in libraries and what the adapter's family keeps begin anew, and the adapter is bound.
    void Begin() override;

    void Script(const std::string &function, const std::string &words) override;
    void Give(const Bytes &content) override;
    void Call(const std::string &function, const std::string &signature) override;
    void CallAndGrow(const std::string &function, const std::string &signature, std::uint64_t size,
                     const Bytes &answer) override;
    void Command(const CommandRow &row, const Bytes &values) override;
    void CutCommand(const CommandRow &row, const Bytes &values) override;
    void ExpectSent(const Bytes &bytes) override;
    Bytes Section(std::size_t count) const override { return ChannelOnFakes::Section(count); }
    std::vector<std::string> Seen() const override { return stand_in.lines; }
    void ForgetSeen() override { stand_in.lines.clear(); }
    void Finish() override {}
    void TakeRoomAwayInTheCall() override;
    Bytes Sent() const override;
    std::vector<std::string> FamilyLog() const override;
    void Unbind() override;

    /// Calls the handler of the signature, over this content of the section or these bytes on the pipe.
    void CallOver(const Bytes &content, const std::string &function, const std::string &signature);
    void CallWithValues(const std::string &function, const std::string &signature, const Bytes &values);

    platform::ModuleHandle module = nullptr; ///< the adapter, as it was bound

private:
    unsigned m_sections = 0;
};

/// The handlers of the signature; one that isn't there throws.
SignatureRow Handlers(const std::string &signature);

/// The name that the adapter is bound by.
inline constexpr const char16_t *adapter_name = u"tarnlink_windows_x64.dll";

} // namespace kessil::test
