#include "fakes/fake_module.h"

#include "fakes/call_log.h"
#include "platform/last_error.h"
#include "platform/module.h"

#include <cstdlib>

namespace kessil {
namespace test {

FakeModule fake_module;

void *FakeModule::Load(const WideString &name)
{
    const auto library = m_libraries.find(name);
    if (library == m_libraries.end()) {
        platform::SetLastError(load_code);
        return nullptr;
    }
    m_loads.push_back({name, library->second, true});
    ++loaded;
    return FakeModuleHandle(m_loads.size() - 1);
}

FakeModule::Loaded &FakeModule::Held(void *module)
{
    const std::uintptr_t index = reinterpret_cast<std::uintptr_t>(module) - 0x3000;
    if (index >= m_loads.size() || !m_loads[index].in_use)
        std::abort();
    return m_loads[index];
}

void *FakeModule::Find(void *module, const char *name)
{
    const Exports &exports = Held(module).exports;
    const auto found = exports.find(name);
    return found == exports.end() ? nullptr : found->second;
}

WideString FakeModule::Free(void *module)
{
    Loaded &load = Held(module);
    load.in_use = false;
    --loaded;
    return load.name;
}

} // namespace test

namespace platform {

ModuleHandle LoadModule(const WideString &name)
{
    test::call_log.Add("LoadModule " + ToUtf8(name));
    return test::fake_module.Load(name);
}

WideString LoadErrorText(std::uint32_t code)
{
    return code == test::fake_module.load_code ? test::fake_module.load_text : ErrorText(code);
}

void *FindExport(ModuleHandle module, const char *name)
{
    if (test::call_log.recording)
        test::call_log.Add(std::string("FindExport ") + name);
    return test::fake_module.Find(module, name);
}

void FreeModule(ModuleHandle module)
{
    const std::uint32_t code = LastError();
    const WideString name = test::fake_module.Free(module);
    test::call_log.Add("FreeModule " + ToUtf8(name));
    if (test::fake_module.on_free)
        test::fake_module.on_free(name);
    SetLastError(code);
}

} // namespace platform
} // namespace kessil
