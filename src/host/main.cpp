#include "families/signature_table.h"
#include "families/vadp/binding.h"
#include "families/vadp/command_table.h"
#include "host/host_process.h"
#include "platform/entry_point.h"

#include <cstdio>

int kessil::platform::Main(const std::vector<WideString> &arguments)
{
    CHostOptions options;
    if (!ParseOptions(arguments, options)) {
        std::fputs(usage_text, stdout);
        return 1;
    }
    return RunHost(options, {SignatureTable(), CommandTable(), bindAdapterFunctions});
}
