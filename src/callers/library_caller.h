#pragma once

#include "callers/loaded_libraries.h"
#include "channel/records.h"
#include "marshal/signature_row.h"

#include <span>

namespace kessil {

/// The name in the log of both callers.
inline constexpr const char *library_caller_component = "LibraryCaller";

/// Serves 'L' and 'F' requests: owns the libraries that the parent loads, and runs the handler of a call's signature on
/// the export that the call names. Every outcome is sent to the parent as a reply, from here or from the handler.
class CLibraryCaller
{
public:
    /// `rows` must outlive the object.
    CLibraryCaller(std::span<const SignatureRow> rows, AfterLoadHook after_load);

    /// Loads a library under its name. A library of exactly that name is released first, also when the load then fails.
    /// Replies 'S', or 'E' with return code 0, the system's code and text.
    void LoadLibraryW(const WideString &name, CIPCCommunication &channel);

    /// Runs the handler of the request's signature on the export that it names. Library, export and signature are
    /// looked up in that order, and the first that is missing is reported.
    void CallFunction(const IPCStruct_FunctionCall &request, CIPCCommunication &channel);

    /// Runs the handler of the last call again, without a lookup. False when that call found no handler or a library
    /// was loaded or released since. A library that unloads itself during a call is not detected.
    bool RepeatCall(CIPCCommunication &channel);

    /// Releases the libraries; see LoadedLibraries::ReleaseAll.
    void ReleaseLibraries();

private:
    LoadedLibraries m_libraries;
    std::span<const SignatureRow> m_rows;
    AfterLoadHook m_afterLoad;
    Handler m_lastHandler = nullptr; // null when there is no call to repeat
    void *m_lastFunction = nullptr;
};

} // namespace kessil
