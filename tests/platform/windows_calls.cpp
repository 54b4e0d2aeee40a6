#include "windows_calls.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <type_traits>

namespace kessil::test {

namespace {

/// Their addresses stand for handles that the system would return.
char g_objects[16];
wchar_t g_message[] = L"text of the system\r\n";
wchar_t g_variable[] = L"value";

void *Object(int index, const char *name)
{
    Name(&g_objects[index], name);
    return &g_objects[index];
}

} // namespace

void *const fake_pipe = Object(0, "pipe");
void *const fake_section = Object(1, "section");
void *const fake_view = Object(2, "view");
void *const fake_module = Object(3, "module");
void *const fake_process = Object(6, "process");
void *const fake_user = Object(9, "user");
void *const fake_token = Object(10, "token");

namespace {

void *const fake_admins = Object(4, "admins");
void *const fake_users = Object(5, "users");
void *const fake_thread = Object(7, "thread");
void *const fake_job = Object(8, "job");

template <class Function>
Function *Real(const char *name)
{
    for (const char *library : {"kernel32", "advapi32"}) {
        if (const FARPROC found = GetProcAddress(GetModuleHandleA(library), name))
            return reinterpret_cast<Function *>(reinterpret_cast<void *>(found));
    }
    std::fprintf(stderr, "the system has no %s\n", name);
    std::abort();
}

std::string Text(const SECURITY_ATTRIBUTES *attributes)
{
    if (!attributes)
        return "null";
    return "{" + std::to_string(attributes->nLength) + ", " + test::Text(attributes->lpSecurityDescriptor) + ", " +
           std::to_string(attributes->bInheritHandle) + "}";
}

bool IsOnStack(const void *block)
{
    MEMORY_BASIC_INFORMATION own = {};
    MEMORY_BASIC_INFORMATION other = {};
    VirtualQuery(&own, &own, sizeof own);
    VirtualQuery(block, &other, sizeof other);
    return own.AllocationBase == other.AllocationBase;
}

/// Names a block, with its size where it was allocated.
std::string Sized(const char *name, void *block)
{
    Name(block, name);
    return IsOnStack(block) ? name : std::string(name) + " of " + std::to_string(_msize(block)) + " bytes";
}

} // namespace

// Defines the pointer through which the platform calls the system's function, and begins the fake that it points to.
#define FAKE(result, name, parameters)                                                                                 \
    static result WINAPI Fake##name parameters;                                                                        \
    extern "C" {                                                                                                       \
    result(WINAPI *__imp_##name) parameters = Fake##name;                                                              \
    }                                                                                                                  \
    static result WINAPI Fake##name parameters

#define PASS_ON_UNLESS_RECORDED(name, ...)                                                                             \
    if (!Recorded())                                                                                                   \
    return Real<decltype(name)>(#name)(__VA_ARGS__)

FAKE(BOOL, WaitNamedPipeW, (LPCWSTR name, DWORD wait))
{
    PASS_ON_UNLESS_RECORDED(WaitNamedPipeW, name, wait);
    return Record("WaitNamedPipeW", name, wait);
}

FAKE(HANDLE, CreateFileW,
     (LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES attributes, DWORD disposition, DWORD flags,
      HANDLE model))
{
    PASS_ON_UNLESS_RECORDED(CreateFileW, name, access, share, attributes, disposition, flags, model);
    return Record("CreateFileW", name, Hex(access), share, Text(attributes), disposition, Hex(flags), model)
               ? fake_pipe
               : INVALID_HANDLE_VALUE;
}

FAKE(BOOL, ReadFile, (HANDLE file, LPVOID buffer, DWORD size, LPDWORD count, LPOVERLAPPED overlapped))
{
    PASS_ON_UNLESS_RECORDED(ReadFile, file, buffer, size, count, overlapped);
    *count = 3;
    return Record("ReadFile", file, buffer, size, count, overlapped);
}

FAKE(BOOL, WriteFile, (HANDLE file, LPCVOID data, DWORD size, LPDWORD count, LPOVERLAPPED overlapped))
{
    PASS_ON_UNLESS_RECORDED(WriteFile, file, data, size, count, overlapped);
    *count = 4;
    return Record("WriteFile", file, data, size, count, overlapped);
}

FAKE(BOOL, CloseHandle, (HANDLE handle))
{
    PASS_ON_UNLESS_RECORDED(CloseHandle, handle);
    Record("CloseHandle", handle);
    SetLastError(left_by_closer);
    return TRUE;
}

FAKE(DWORD, FormatMessageW,
     (DWORD flags, LPCVOID source, DWORD code, DWORD language, LPWSTR buffer, DWORD size, va_list *arguments))
{
    PASS_ON_UNLESS_RECORDED(FormatMessageW, flags, source, code, language, buffer, size, arguments);
    if (!Record("FormatMessageW", Hex(flags), source, code, language, static_cast<void *>(buffer), size,
                static_cast<void *>(arguments)))
        return 0;
    wchar_t *const message = g_message;
    Name(message, "message");
    std::memcpy(buffer, &message, sizeof message);
    return static_cast<DWORD>(std::wcslen(g_message));
}

FAKE(HLOCAL, LocalFree, (HLOCAL memory))
{
    PASS_ON_UNLESS_RECORDED(LocalFree, memory);
    Record("LocalFree", memory);
    return nullptr;
}

FAKE(HANDLE, CreateFileMappingW,
     (HANDLE file, LPSECURITY_ATTRIBUTES attributes, DWORD protection, DWORD high, DWORD low, LPCWSTR name))
{
    PASS_ON_UNLESS_RECORDED(CreateFileMappingW, file, attributes, protection, high, low, name);
    return Record("CreateFileMappingW", file, Text(attributes), Hex(protection), high, low, name) ? fake_section
                                                                                                  : nullptr;
}

FAKE(HANDLE, OpenFileMappingW, (DWORD access, BOOL inherit, LPCWSTR name))
{
    PASS_ON_UNLESS_RECORDED(OpenFileMappingW, access, inherit, name);
    return Record("OpenFileMappingW", Hex(access), inherit, name) ? fake_section : nullptr;
}

FAKE(LPVOID, MapViewOfFile, (HANDLE section, DWORD access, DWORD high, DWORD low, SIZE_T size))
{
    PASS_ON_UNLESS_RECORDED(MapViewOfFile, section, access, high, low, size);
    return Record("MapViewOfFile", section, Hex(access), high, low, size) ? fake_view : nullptr;
}

FAKE(BOOL, UnmapViewOfFile, (LPCVOID view))
{
    PASS_ON_UNLESS_RECORDED(UnmapViewOfFile, view);
    Record("UnmapViewOfFile", view);
    SetLastError(left_by_closer);
    return TRUE;
}

FAKE(BOOL, InitializeSecurityDescriptor, (PSECURITY_DESCRIPTOR descriptor, DWORD revision))
{
    PASS_ON_UNLESS_RECORDED(InitializeSecurityDescriptor, descriptor, revision);
    return Record("InitializeSecurityDescriptor", Sized("descriptor", descriptor), revision);
}

FAKE(BOOL, AllocateAndInitializeSid,
     (PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD first, DWORD second, DWORD third, DWORD fourth,
      DWORD fifth, DWORD sixth, DWORD seventh, DWORD eighth, PSID *sid))
{
    PASS_ON_UNLESS_RECORDED(AllocateAndInitializeSid, authority, count, first, second, third, fourth, fifth, sixth,
                            seventh, eighth, sid);
    std::string bytes;
    for (const BYTE byte : authority->Value)
        bytes += std::to_string(byte);
    if (!Record("AllocateAndInitializeSid", bytes, count, first, second, third, fourth, fifth, sixth, seventh, eighth))
        return FALSE;
    *sid = second == 544 ? fake_admins : fake_users;
    return TRUE;
}

FAKE(BOOL, IsValidSid, (PSID sid))
{
    PASS_ON_UNLESS_RECORDED(IsValidSid, sid);
    return Record("IsValidSid", sid);
}

FAKE(DWORD, GetLengthSid, (PSID sid))
{
    PASS_ON_UNLESS_RECORDED(GetLengthSid, sid);
    Record("GetLengthSid", sid);
    return sid == fake_admins ? 100 : 1000;
}

FAKE(BOOL, InitializeAcl, (PACL acl, DWORD size, DWORD revision))
{
    PASS_ON_UNLESS_RECORDED(InitializeAcl, acl, size, revision);
    return Record("InitializeAcl", Sized("acl", acl), size, revision);
}

FAKE(BOOL, AddAccessAllowedAce, (PACL acl, DWORD revision, DWORD access, PSID sid))
{
    PASS_ON_UNLESS_RECORDED(AddAccessAllowedAce, acl, revision, access, sid);
    return Record("AddAccessAllowedAce", static_cast<void *>(acl), revision, Hex(access), sid);
}

FAKE(BOOL, SetSecurityDescriptorDacl, (PSECURITY_DESCRIPTOR descriptor, BOOL present, PACL acl, BOOL defaulted))
{
    PASS_ON_UNLESS_RECORDED(SetSecurityDescriptorDacl, descriptor, present, acl, defaulted);
    return Record("SetSecurityDescriptorDacl", descriptor, present, static_cast<void *>(acl), defaulted);
}

FAKE(PVOID, FreeSid, (PSID sid))
{
    PASS_ON_UNLESS_RECORDED(FreeSid, sid);
    Record("FreeSid", sid);
    SetLastError(left_by_closer);
    return nullptr;
}

FAKE(HMODULE, LoadLibraryExW, (LPCWSTR name, HANDLE file, DWORD flags))
{
    PASS_ON_UNLESS_RECORDED(LoadLibraryExW, name, file, flags);
    return Record("LoadLibraryExW", name, file, flags) ? static_cast<HMODULE>(fake_module) : nullptr;
}

FAKE(HMODULE, LoadLibraryW, (LPCWSTR name))
{
    PASS_ON_UNLESS_RECORDED(LoadLibraryW, name);
    return Record("LoadLibraryW", name) ? static_cast<HMODULE>(fake_module) : nullptr;
}

FAKE(BOOL, FreeLibrary, (HMODULE module))
{
    PASS_ON_UNLESS_RECORDED(FreeLibrary, module);
    Record("FreeLibrary", static_cast<void *>(module));
    SetLastError(left_by_closer);
    return TRUE;
}

FAKE(wchar_t *, _wgetenv, (const wchar_t *name))
{
    PASS_ON_UNLESS_RECORDED(_wgetenv, name);
    return Record("_wgetenv", name) ? g_variable : nullptr;
}

FAKE(int, _wputenv, (const wchar_t *assignment))
{
    PASS_ON_UNLESS_RECORDED(_wputenv, assignment);
    return Record("_wputenv", assignment) ? 0 : -1;
}

FAKE(BOOL, LogonUserW, (LPCWSTR user, LPCWSTR domain, LPCWSTR password, DWORD type, DWORD provider, PHANDLE token))
{
    PASS_ON_UNLESS_RECORDED(LogonUserW, user, domain, password, type, provider, token);
    *token = fake_user;
    return Record("LogonUserW", user, domain, password, type, provider);
}

FAKE(BOOL, ImpersonateLoggedOnUser, (HANDLE token))
{
    PASS_ON_UNLESS_RECORDED(ImpersonateLoggedOnUser, token);
    return Record("ImpersonateLoggedOnUser", token);
}

FAKE(BOOL, OpenProcessToken, (HANDLE process, DWORD access, PHANDLE token))
{
    // Others query this process's own token for its user.
    if (!Recorded() || process != fake_process)
        return Real<decltype(OpenProcessToken)>("OpenProcessToken")(process, access, token);
    *token = fake_token;
    return Record("OpenProcessToken", process, access);
}

FAKE(BOOL, LookupPrivilegeValueW, (LPCWSTR system, LPCWSTR name, PLUID id))
{
    PASS_ON_UNLESS_RECORDED(LookupPrivilegeValueW, system, name, id);
    *id = {0x11223344, 0x55667788};
    return Record("LookupPrivilegeValueW", system, name);
}

FAKE(BOOL, AdjustTokenPrivileges,
     (HANDLE token, BOOL disable_all, PTOKEN_PRIVILEGES state, DWORD size, PTOKEN_PRIVILEGES before, PDWORD needed))
{
    PASS_ON_UNLESS_RECORDED(AdjustTokenPrivileges, token, disable_all, state, size, before, needed);
    const LUID_AND_ATTRIBUTES &privilege = state->Privileges[0];
    return Record("AdjustTokenPrivileges", token, disable_all, state->PrivilegeCount, Hex(privilege.Luid.LowPart),
                  Hex(static_cast<DWORD>(privilege.Luid.HighPart)), privilege.Attributes, size,
                  static_cast<void *>(before), static_cast<void *>(needed));
}

FAKE(BOOL, GetVersionExW, (LPOSVERSIONINFOW version))
{
    PASS_ON_UNLESS_RECORDED(GetVersionExW, version);
    const bool done = Record("GetVersionExW", version->dwOSVersionInfoSize);
    version->dwMajorVersion = 77;
    return done;
}

FAKE(void, GetLocalTime, (LPSYSTEMTIME time))
{
    PASS_ON_UNLESS_RECORDED(GetLocalTime, time);
    Record("GetLocalTime");
    // The third member is the day of the week, which nothing reads.
    *time = {2019, 6, 3, 19, 12, 16, 44, 120};
}

FAKE(BOOL, InitializeCriticalSectionAndSpinCount, (LPCRITICAL_SECTION section, DWORD spin_count))
{
    PASS_ON_UNLESS_RECORDED(InitializeCriticalSectionAndSpinCount, section, spin_count);
    return Record("InitializeCriticalSectionAndSpinCount", static_cast<void *>(section), spin_count) &&
           Real<decltype(InitializeCriticalSectionAndSpinCount)>("InitializeCriticalSectionAndSpinCount")(section,
                                                                                                          spin_count);
}

FAKE(void, EnterCriticalSection, (LPCRITICAL_SECTION section))
{
    if (Recorded())
        Record("EnterCriticalSection", static_cast<void *>(section));
    Real<decltype(EnterCriticalSection)>("EnterCriticalSection")(section);
}

FAKE(void, LeaveCriticalSection, (LPCRITICAL_SECTION section))
{
    if (Recorded())
        Record("LeaveCriticalSection", static_cast<void *>(section));
    Real<decltype(LeaveCriticalSection)>("LeaveCriticalSection")(section);
}

FAKE(void, DeleteCriticalSection, (LPCRITICAL_SECTION section))
{
    if (Recorded())
        Record("DeleteCriticalSection", static_cast<void *>(section));
    Real<decltype(DeleteCriticalSection)>("DeleteCriticalSection")(section);
}

FAKE(HANDLE, CreateNamedPipeW,
     (LPCWSTR name, DWORD open_mode, DWORD pipe_mode, DWORD instances, DWORD out_size, DWORD in_size, DWORD wait,
      LPSECURITY_ATTRIBUTES attributes))
{
    PASS_ON_UNLESS_RECORDED(CreateNamedPipeW, name, open_mode, pipe_mode, instances, out_size, in_size, wait,
                            attributes);
    return Record("CreateNamedPipeW", name, Hex(open_mode), Hex(pipe_mode), instances, out_size, in_size, wait,
                  Text(attributes))
               ? fake_pipe
               : INVALID_HANDLE_VALUE;
}

FAKE(UINT, GetErrorMode, ())
{
    PASS_ON_UNLESS_RECORDED(GetErrorMode);
    return error_mode_before;
}

FAKE(UINT, SetErrorMode, (UINT mode))
{
    PASS_ON_UNLESS_RECORDED(SetErrorMode, mode);
    Record("SetErrorMode", Hex(mode));
    return error_mode_before;
}

FAKE(HANDLE, CreateJobObjectW, (LPSECURITY_ATTRIBUTES attributes, LPCWSTR name))
{
    PASS_ON_UNLESS_RECORDED(CreateJobObjectW, attributes, name);
    return Record("CreateJobObjectW", Text(attributes), name) ? fake_job : nullptr;
}

FAKE(BOOL, SetInformationJobObject, (HANDLE job, JOBOBJECTINFOCLASS kind, LPVOID information, DWORD size))
{
    PASS_ON_UNLESS_RECORDED(SetInformationJobObject, job, kind, information, size);
    const auto *const limits = static_cast<const JOBOBJECT_EXTENDED_LIMIT_INFORMATION *>(information);
    return Record("SetInformationJobObject", job, static_cast<int>(kind),
                  Hex(limits->BasicLimitInformation.LimitFlags));
}

FAKE(BOOL, AssignProcessToJobObject, (HANDLE job, HANDLE process))
{
    PASS_ON_UNLESS_RECORDED(AssignProcessToJobObject, job, process);
    return Record("AssignProcessToJobObject", job, process);
}

FAKE(BOOL, CreateProcessW,
     (LPCWSTR program, LPWSTR line, LPSECURITY_ATTRIBUTES process, LPSECURITY_ATTRIBUTES thread, BOOL inherit,
      DWORD flags, LPVOID environment, LPCWSTR directory, LPSTARTUPINFOW startup, LPPROCESS_INFORMATION started))
{
    PASS_ON_UNLESS_RECORDED(CreateProcessW, program, line, process, thread, inherit, flags, environment, directory,
                            startup, started);
    *started = {fake_process, fake_thread, 1001, 1002};
    return Record("CreateProcessW", program, static_cast<const wchar_t *>(line), Text(process), Text(thread), inherit,
                  Hex(flags), environment, directory, Hex(startup->dwFlags));
}

FAKE(DWORD, ResumeThread, (HANDLE thread))
{
    PASS_ON_UNLESS_RECORDED(ResumeThread, thread);
    return Record("ResumeThread", thread) ? 1 : ~DWORD{0};
}

FAKE(BOOL, TerminateProcess, (HANDLE process, UINT exit_code))
{
    PASS_ON_UNLESS_RECORDED(TerminateProcess, process, exit_code);
    Record("TerminateProcess", process, exit_code);
    SetLastError(left_by_closer);
    return TRUE;
}

static PHANDLER_ROUTINE g_console_routine = nullptr;

FAKE(BOOL, SetConsoleCtrlHandler, (PHANDLER_ROUTINE routine, BOOL add))
{
    PASS_ON_UNLESS_RECORDED(SetConsoleCtrlHandler, routine, add);
    g_console_routine = routine;
    return Record("SetConsoleCtrlHandler", reinterpret_cast<void *>(routine), add);
}

FAKE(void, Sleep, (DWORD milliseconds))
{
    if (Recorded())
        Record("Sleep", Hex(milliseconds));
    else
        Real<decltype(Sleep)>("Sleep")(milliseconds);
}

bool SendConsoleEvent(unsigned long event)
{
    return g_console_routine(event) != FALSE;
}

static std::u16string g_typed;

void TypeAtConsole(const std::u16string &units)
{
    g_typed = units;
}

FAKE(BOOL, GetConsoleMode, (HANDLE console, LPDWORD mode))
{
    PASS_ON_UNLESS_RECORDED(GetConsoleMode, console, mode);
    *mode = console_mode_before;
    return Record("GetConsoleMode", console);
}

FAKE(BOOL, SetConsoleMode, (HANDLE console, DWORD mode))
{
    PASS_ON_UNLESS_RECORDED(SetConsoleMode, console, mode);
    return Record("SetConsoleMode", console, Hex(mode));
}

FAKE(BOOL, WriteConsoleW, (HANDLE console, const VOID *text, DWORD size, LPDWORD count, LPVOID reserved))
{
    PASS_ON_UNLESS_RECORDED(WriteConsoleW, console, text, size, count, reserved);
    *count = size;
    return Record("WriteConsoleW", console, std::wstring(static_cast<const wchar_t *>(text), size).c_str(), size);
}

FAKE(BOOL, ReadConsoleW,
     (HANDLE console, LPVOID units, DWORD size, LPDWORD count, PCONSOLE_READCONSOLE_CONTROL control))
{
    PASS_ON_UNLESS_RECORDED(ReadConsoleW, console, units, size, count, control);
    if (g_typed.empty())
        return FALSE;
    *static_cast<char16_t *>(units) = g_typed.front();
    g_typed.erase(0, 1);
    *count = 1;
    return TRUE;
}

} // namespace kessil::test
