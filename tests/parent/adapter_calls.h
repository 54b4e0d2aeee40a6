#pragma once

#include <kessil/adapter.h>

#include <functional>
#include <string>
#include <vector>

namespace kessil::parent {

/// One call of each command whose values are bare on the pipe. All bytes are hexadecimal.
struct AdapterCall
{
    std::string name;
    std::string request; ///< without the request that some calls send behind it
    std::string yes;     ///< behind the log block
    std::string no;      ///< likewise, with the text "bad"; empty for a command that has none
    std::function<Answer(Adapter &)> make;
    bool logs = true;          ///< whether the answer has a log block
    bool has_sentinel = false; ///< whether a request whose answer is known is sent behind it
};

const std::vector<AdapterCall> &AdapterCalls();

/// One call of each command whose arguments lie in the section.
struct SectionCall
{
    std::string name;
    std::string request;
    std::string arguments; ///< as the scripted helper's `arguments` takes them
    std::string yes;       ///< the results, from offset 0 on
    std::string no;        ///< likewise, with the text "bad"; empty for a command that has none
    std::function<Answer(Adapter &)> make;
};

const std::vector<SectionCall> &SectionCalls();

} // namespace kessil::parent
