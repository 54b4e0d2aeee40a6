#include <kessil/adapter.h>

#include <cinttypes>
#include <cstdio>
#include <filesystem>

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: list_machines KESSIL ADAPTER PATH\n");
        return 2;
    }
    kessil::parent::Options options;
    options.program = argv[1];
    kessil::parent::Helper helper(options);
    kessil::parent::AdapterOptions adapter_options;
    adapter_options.on_log = [](std::uint8_t level, std::string_view text) {
        std::printf("level %d: %.*s\n", level, static_cast<int>(text.size()), text.data());
    };
    kessil::parent::Adapter adapter(helper, adapter_options);

    kessil::parent::Result result = helper.Start();
    if (result)
        result = adapter.Load(std::filesystem::absolute(argv[2]).u16string());
    if (!result) {
        std::fprintf(stderr, "%s\n", result.message.c_str());
        return 1;
    }
    std::vector<kessil::parent::AdapterItem> machines;
    const kessil::parent::Answer answer = adapter.ListMachines(argv[3], machines);
    if (!answer) {
        std::fprintf(stderr, "%s\n", answer.message.c_str());
        return 1;
    }
    for (const kessil::parent::AdapterItem &machine : machines)
        std::printf("%s, %" PRIu64 "\n", machine.name.c_str(), machine.value);
    return helper.Stop() ? 0 : 1;
}
