#include "platform/entry_point.h"

int main(int argc, char **argv)
{
    std::vector<kessil::WideString> arguments;
    arguments.reserve(static_cast<std::size_t>(argc));
    for (int i = 0; i < argc; ++i)
        arguments.push_back(kessil::platform::FromUtf8(argv[i]));
    return kessil::platform::Main(arguments);
}
