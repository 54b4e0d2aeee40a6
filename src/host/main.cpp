#include "host/host_process.h"
#include "platform/entry_point.h"

#include <cstdio>

namespace {

// No library of those known so far needs anything after its load.
void AfterLoad(kessil::CIPCCommunication & /*channel*/, const kessil::WideString & /*name*/,
               kessil::platform::ModuleHandle /*module*/)
{}

} // namespace

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    CHostOptions options;
    if (!ParseOptions(arguments, options)) {
        std::fputs(usage_text, stdout);
        return 1;
    }
    return RunHost(options, {SignatureTable(), AfterLoad});
}
