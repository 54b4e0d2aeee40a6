#pragma once

#include "parent/section/argument_list.h"
#include "parent/section/result_list.h"

namespace kessil::parent {

/// The section that calls use, the name by which the helper knows it, and the two lists that lie in it. Whoever
/// sends or answers an announcement says here which section is in use then.
class CallSection
{
public:
    CallSection() = default;
    ~CallSection() { Release(); }
    CallSection(const CallSection &) = delete;
    CallSection &operator=(const CallSection &) = delete;

    const SharedSection &Memory() const { return m_memory; }
    ArgumentList &Arguments() { return m_arguments; }
    ResultList &Results() { return m_results; }
    const ResultList &Results() const { return m_results; }

    /// Takes a section into use that this side made and the helper has opened.
    void Use(SharedSection section, const WideString &name);

    /// Whether the helper gives its next section this name.
    bool IsNextName(const WideString &name) const;

    /// Takes a section into use that the helper made. The old one is released, and the new name removed from the
    /// system. False when it can't be opened: there is no section then, and the last error has the reason.
    bool Open(const WideString &name, std::uint32_t size);

    /// Releases the section, its names, and the lists in it.
    void Release();

private:
    SharedSection m_memory;
    WideString m_name;
    ArgumentList m_arguments{m_memory};
    ResultList m_results{m_memory};
};

} // namespace kessil::parent
