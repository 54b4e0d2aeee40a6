#include "ese_recorder.h"

#include "leave_last_error.h"
#include "recorded_call.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

const Database databases[] = {
    {u"mail",
     0,
     u"a\0bc\0",
     {0x13121110, 0x1514, 0x1716, {0x18, 0x19, 0x1A, 0x1B, 0x1C, 0x1D, 0x1E, 0x1F}},
     3,
     0x80000001},
    {u"pub", 99, nullptr, {0xF3F2F1F0, 0xF5F4, 0xF7F6, {0xF8, 0xF9, 0xFA, 0xFB, 0xFC, 0xFD, 0xFE, 0xFF}}, 4, 2},
};

const Icon icons[] = {{3, "\xA1\xA2\xA3"}, {0, nullptr}};

const Instance instances[] = {
    {0x0102030405060708, u"one", 7, 2, databases, 0, nullptr},
    {2, u"", 0xFFFFFFFF, 0, nullptr, 2, icons},
};

const Registered registered[] = {
    {u"ms", nullptr, 1, {4, "\xB1\xB2\xB3\xB4"}},
    {nullptr, u"ep", 0x80000010, {0, nullptr}},
};

RecordedCall On(const char *function, const void *context)
{
    RecordedCall call(function);
    call.Handle("context", reinterpret_cast<std::uintptr_t>(context));
    return call;
}

RecordedCall On(const char *function, const void *context, const void *file)
{
    RecordedCall call = On(function, context);
    call.Handle("file", reinterpret_cast<std::uintptr_t>(file));
    return call;
}

void HandOut(const RecordedCall &call, const char *name, void **handle)
{
    if (const auto number = call.Script().NumberOf(name))
        *handle = reinterpret_cast<void *>(*number);
}

template <class Record>
void HandOut(const RecordedCall &call, const char *name, const Record *records, std::uint32_t *count,
             const Record **out)
{
    if (!call.Script().NumberOf(name))
        return;
    call.Out(name, count);
    *out = records;
}

void HandOut(const RecordedCall &call, EseList *list)
{
    static std::vector<char16_t> units;
    if (call.Script().TextOf("list") == "null") {
        *list = nullptr;
    } else if (const auto bytes = call.Script().BytesOf("list")) {
        units.assign(bytes->size() / 2, u'\0');
        std::memcpy(units.data(), bytes->data(), bytes->size());
        *list = units.data();
    }
}

// The list with all its zero units.
std::size_t BytesOf(EseList list)
{
    std::size_t units = 0;
    while (list[units] != 0 || list[units + 1] != 0)
        ++units;
    return 2 * (units + 2);
}

// Leaves the last error as late as can be: comes last in every function, and behind it only destructors run.
std::uint32_t Return(const RecordedCall &call)
{
    const std::uint32_t result = call.Result32();
    if (const auto error = call.Script().NumberOf("error"))
        LeaveLastError(static_cast<std::uint32_t>(*error));
    return result;
}

} // namespace

std::uint32_t HrESEBackupPrepare(const char16_t *server, const char16_t *annotation, std::uint32_t *count,
                                 const Instance **out, void **context)
{
    RecordedCall call("HrESEBackupPrepare");
    call.WideText("server", server).WideText("annotation", annotation);
    call.Number("count", *count).Pointer("instances", *out).Done();
    HandOut(call, "instances", instances, count, out);
    HandOut(call, "context", context);
    return Return(call);
}

std::uint32_t HrESEBackupSetup(void *context, std::uint64_t instance, std::uint32_t type)
{
    return Return(On("HrESEBackupSetup", context).Handle("instance", instance).Handle("type", type).Done());
}

std::uint32_t HrESEBackupOpenFile(void *context, const char16_t *name, std::uint32_t read_hint, std::uint32_t sections,
                                  void **file, std::uint64_t *size)
{
    RecordedCall call = On("HrESEBackupOpenFile", context);
    call.WideText("name", name).Handle("read_hint", read_hint).Number("sections", sections).Done();
    HandOut(call, "file", file);
    call.Out("size", size);
    return Return(call);
}

std::uint32_t HrESEBackupReadFile(void *context, void *file, void *data, std::uint32_t size, std::uint32_t *count)
{
    RecordedCall call = On("HrESEBackupReadFile", context, file);
    call.Number("size", size).Data("data", data, std::min<std::uint32_t>(size, 32)).Number("count", *count).Done();
    call.Fill("fill", data);
    call.Out("count", count);
    return Return(call);
}

std::uint32_t HrESEBackupCloseFile(void *context, void *file)
{
    return Return(On("HrESEBackupCloseFile", context, file).Done());
}

std::uint32_t HrESEBackupGetLogAndPatchFiles(void *context, EseList *list)
{
    RecordedCall call = On("HrESEBackupGetLogAndPatchFiles", context);
    call.Data("list", *list, *list == nullptr ? 0 : BytesOf(*list)).Done();
    HandOut(call, list);
    return Return(call);
}

std::uint32_t HrESEBackupTruncateLogs(void *context)
{
    return Return(On("HrESEBackupTruncateLogs", context).Done());
}

std::uint32_t HrESEBackupInstanceEnd(void *context, std::uint32_t flags)
{
    return Return(On("HrESEBackupInstanceEnd", context).Handle("flags", flags).Done());
}

std::uint32_t HrESEBackupEnd(void *context)
{
    return Return(On("HrESEBackupEnd", context).Done());
}

std::uint32_t HrESEBackupRestoreGetRegistered(const char16_t *server, const char16_t *name, std::uint32_t flags,
                                              std::uint32_t *count, const Registered **out)
{
    RecordedCall call("HrESEBackupRestoreGetRegistered");
    call.WideText("server", server).WideText("name", name).Handle("flags", flags);
    call.Number("count", *count).Pointer("registered", *out).Done();
    HandOut(call, "registered", registered, count, out);
    return Return(call);
}

std::uint32_t HrESERestoreOpen(const char16_t *server, const char16_t *annotation, const char16_t *system_path,
                               const char16_t *log_path, void **context)
{
    RecordedCall call("HrESERestoreOpen");
    call.WideText("server", server).WideText("annotation", annotation);
    call.WideText("system_path", system_path).WideText("log_path", log_path).Done();
    HandOut(call, "context", context);
    return Return(call);
}

std::uint32_t HrESERestoreReopen(const char16_t *server, const char16_t *annotation, const char16_t *log_path,
                                 void **context)
{
    RecordedCall call("HrESERestoreReopen");
    call.WideText("server", server).WideText("annotation", annotation).WideText("log_path", log_path).Done();
    HandOut(call, "context", context);
    return Return(call);
}

std::uint32_t HrESERestoreAddDatabase(void *context, const char16_t *name, Guid guid, EseList source, EseList *list)
{
    RecordedCall call = On("HrESERestoreAddDatabase", context);
    call.WideText("name", name).Handle("part1", guid.part1).Handle("part2", guid.part2).Handle("part3", guid.part3);
    call.Data("part4", guid.part4, sizeof guid.part4).Data("source", source, BytesOf(source));
    call.Pointer("list", *list).Done();
    HandOut(call, list);
    return Return(call);
}

std::uint32_t HrESERestoreOpenFile(void *context, const char16_t *name, std::uint32_t sections, void **file)
{
    RecordedCall call = On("HrESERestoreOpenFile", context);
    call.WideText("name", name).Number("sections", sections).Done();
    HandOut(call, "file", file);
    return Return(call);
}

std::uint32_t HrESERestoreSaveEnvironment(void *context)
{
    return Return(On("HrESERestoreSaveEnvironment", context).Done());
}

std::uint32_t HrESERestoreComplete(void *context, const char16_t *checkpoint_path, const char16_t *log_path,
                                   const char16_t *target_instance, std::uint32_t flags)
{
    RecordedCall call = On("HrESERestoreComplete", context);
    call.WideText("checkpoint_path", checkpoint_path).WideText("log_path", log_path);
    call.WideText("target_instance", target_instance).Handle("flags", flags).Done();
    return Return(call);
}

std::uint32_t HrESERestoreClose(void *context, std::uint32_t mode)
{
    return Return(On("HrESERestoreClose", context).Handle("mode", mode).Done());
}
