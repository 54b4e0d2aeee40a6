// A parent that calls a library which crashes, reads the outcome, and continues with another helper.

#include <kessil/parent.h>

#include <cstdio>
#include <filesystem>
#include <string>

namespace {

using kessil::parent::Result;

// Loads the library in a helper of its own and asks for the number that `function` returns.
Result Ask(const char *kessil, const char *library_path, const char *function, std::uint32_t &number)
{
    kessil::parent::Options options;
    options.program = kessil;
    kessil::parent::Helper helper(options);
    const kessil::WideString library = std::filesystem::absolute(library_path).u16string();

    Result result = helper.Start();
    if (result)
        result = helper.Load(library);
    helper.Begin();
    if (result)
        result = helper.Call(library, function, std::string("SIGNATURE_") + function, {});
    if (result)
        result = helper.Results().U32(number).Complete();
    return result ? helper.Stop() : result;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: survive_crash KESSIL CRASHING_LIBRARY OTHER_LIBRARY\n");
        return 2;
    }
    std::uint32_t number = 0;
    const Result crashed = Ask(argv[1], argv[2], "GetBackupType", number);
    std::printf("outcome: %s\n%s\n\n", kessil::parent::Name(crashed.outcome), crashed.message.c_str());

    const Result answered = Ask(argv[1], argv[3], "GetLibApiVersion", number);
    if (!answered) {
        std::fprintf(stderr, "%s\n", answered.message.c_str());
        return 1;
    }
    std::printf("This process is fine. Its next helper answers: interface version %u.\n", number);
    return crashed.outcome == kessil::parent::Outcome::Died ? 0 : 1;
}
