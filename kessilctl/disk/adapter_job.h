#pragma once

#include "kessilctl/console/password.h"
#include "kessilctl/run.h"
#include <kessil/adapter.h>

#include <span>
#include <string>

namespace kessil::kessilctl {

/// What a task of an adapter works with: the adapter, hosted by a helper that has been started. Every call throws
/// Failure: LibraryFailed, with the adapter's own text, when the adapter says no. An interruption is a Failure, too,
/// but what is open is then closed in order: it keeps every call from being made but those that close.
class AdapterJob
{
public:
    /// Loads the adapter. What is given here outlives the object; `filled` has its adapter's part.
    AdapterJob(const Command &asked, parent::Helper &helper, const Interruption &interruption, Report &filled,
               const Screen &shown);

    /// Gives the adapter the credentials that the command line has, if any. The password is then forgotten.
    void GiveCredentials(Password &password);

    /// Makes a call of the adapter: `call` is given the parent::Adapter and returns the Answer.
    template <typename Call>
    void Ask(const Call &call)
    {
        m_interruption.Check();
        AskUninterrupted(call);
    }
    template <typename Call>
    void AskUninterrupted(const Call &call)
    {
        Check(call(m_adapter));
    }

    /// For a call that closes when an error is under way: made if the helper still serves, whatever it brings.
    template <typename Call>
    void CloseAnyway(const Call &call)
    {
        if (m_helper.Running())
            call(m_adapter);
    }

    const Command &command;
    Report &report;
    AdapterReport &result; ///< the report's
    Screen screen;
    Progress *progress = nullptr; ///< while one is shown

private:
    void TakeLine(std::uint8_t level, std::string_view text);
    static void Check(const parent::Answer &answer);

    parent::Helper &m_helper;
    const Interruption &m_interruption;
    parent::Adapter m_adapter;
};

/// The adapter's disks may be opened while it lives.
class DiskAccess
{
public:
    explicit DiskAccess(AdapterJob &job);
    ~DiskAccess();
    DiskAccess(const DiskAccess &) = delete;
    DiskAccess &operator=(const DiskAccess &) = delete;

    /// Ends the access, and says so when that fails.
    void End();

private:
    AdapterJob &m_job;
    bool m_begun = false;
};

/// The disk that the command line names, open in the adapter.
class OpenDisk
{
public:
    OpenDisk(AdapterJob &job, bool read_only);
    ~OpenDisk();
    OpenDisk(const OpenDisk &) = delete;
    OpenDisk &operator=(const OpenDisk &) = delete;

    void Read(std::uint64_t start, std::span<std::byte> sectors);
    void Write(std::uint64_t start, std::span<const std::byte> sectors);

    /// Closes it, and says so when that fails.
    void Close();

private:
    AdapterJob &m_job;
    bool m_open = false;
};

/// Does what the command line asks for.
void PerformAdapterTask(AdapterJob &job);

void ListInventory(AdapterJob &job);
void ReadDisk(AdapterJob &job);
void WriteDisk(AdapterJob &job);

} // namespace kessil::kessilctl
