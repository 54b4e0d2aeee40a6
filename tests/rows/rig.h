#pragma once

#include "rows/adapter_row.h"
#include "rows/row.h"
#include "support/wire.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kessil::test {

/// A place where the rows of one stand-in library can be run. There are two, and a program links one of them: handlers
/// on fakes, in this process, and a helper process. What the rows expect is written once, for both.
class Rig
{
public:
    virtual ~Rig() = default;

    /// Begins a row: nothing is scripted and nothing recorded any more.
    virtual void Begin() = 0;

    /// Has the library do this whenever `function` is called: the words of its line, as tests/targets/script.h has
    /// them.
    virtual void Script(const std::string &function, const std::string &words) = 0;

    /// Announces a new section of this content. A helper process takes no section of no bytes, and gets one of a single
    /// EE for it, which no element of the rows fits into.
    virtual void Give(const Bytes &content) = 0;

    /// Calls the function over the section.
    virtual void Call(const std::string &function, const std::string &signature) = 0;

    /// The same with a reply that outgrows the section: a new one of `size` bytes is announced first, and the parent
    /// answers that.
    virtual void CallAndGrow(const std::string &function, const std::string &signature, std::uint64_t size,
                             const Bytes &answer) = 0;

    /// Calls the function of the row as a command, with these bytes behind it. CutCommand makes the row's next value
    /// one that can't be read, if CanCut.
    virtual void Command(const CommandRow &row, const Bytes &values) = 0;
    virtual void CutCommand(const CommandRow &row, const Bytes &values) = 0;

    /// What came back: exactly these bytes since the last of these expectations, and nothing behind them.
    virtual void ExpectSent(const Bytes &bytes) = 0;

    /// The first bytes of the section, the parent's or the one that replaced it.
    virtual Bytes Section(std::size_t count) const = 0;

    /// What the library recorded since ForgetSeen, line by line.
    virtual std::vector<std::string> Seen() const = 0;
    virtual void ForgetSeen() = 0;

    /// Ends in order, with nothing left to read; a helper that doesn't exit as it should is a failure. A rig that isn't
    /// finished is given up.
    virtual void Finish() = 0;

    // Only the rig on fakes can do the following, and the other one throws. See Capabilities.

    /// While the library runs, the section is replaced by one without room, and the parent refuses a larger one.
    virtual void TakeRoomAwayInTheCall();

    /// What was sent since the last expectation, whole.
    virtual Bytes Sent() const;

    /// The log of the adapter's family since the last expectation, each record as "<level>: <text>".
    virtual std::vector<std::string> FamilyLog() const;

    /// From now on there is no adapter that gives error texts.
    virtual void Unbind();
};

/// What a rig can do beyond running rows.
struct Capabilities
{
    bool takes_room_away; ///< TakeRoomAwayInTheCall: any reply can be refused. Without it only those that outgrow a
                          ///< section as large as the in-list
    bool sees_the_log;    ///< FamilyLog
    bool unbinds;         ///< Unbind
    bool cuts_any_byte;   ///< gives a section so cheaply that an in-list is cut behind each byte, and not only behind
                          ///< each element
    bool cuts_any_value;  ///< CutCommand ends the pipe. Without it only texts can be cut, by a length that is too large
};
extern const Capabilities rig_can;

/// A rig of its own for the library, as after a start.
std::unique_ptr<Rig> NewRig(const std::string &library);

/// The rig that the rows of a library share. DropRig gives it up, and the next row gets a new one. FinishRigs finishes
/// them all.
Rig &SharedRig(const std::string &library);
void DropRig(const std::string &library);
void FinishRigs();

/// The stand-in adapter, by the file name that the helper knows an adapter by.
inline constexpr const char *adapter_library = "recorder_tarnlink_windows_x64.dll";

} // namespace kessil::test
