#pragma once

#include "callers/loaded_libraries.h"
#include "callers/signature_table.h"
#include "channel/records.h"

#include <span>

namespace kessil {

/// Serves 'l' and 'f' requests, the second generation: as CLibraryCaller does, with libraries of its own, but without
/// frames. Its own answers are bare 32-bit values: 1 for a library that was loaded, -1 for what couldn't be done. The
/// reason stands in the log alone.
class CLibraryCallerAlt
{
public:
    /// `rows` must outlive the object.
    CLibraryCallerAlt(std::span<const SignatureRow> rows, AfterLoadHook after_load);

    /// Loads a library under its name. A library of exactly that name is released first, and stays gone when the load
    /// fails. A library whose answer couldn't be written is loaded all the same.
    void LoadLibraryW(const WideString &name, CIPCCommunication &channel);

    /// Runs the handler of the request's signature on the export that it names. Library, export and signature are
    /// looked up in that order; the first that is missing makes the answer -1, in the place of the handler's first.
    void CallFunction(const IPCStruct_FunctionCallAlt &request, CIPCCommunication &channel);

    /// Releases the libraries; see LoadedLibraries::ReleaseAll.
    void ReleaseLibraries() { m_libraries.ReleaseAll(); }

private:
    LoadedLibraries m_libraries;
    std::span<const SignatureRow> m_rows;
    AfterLoadHook m_afterLoad;
};

} // namespace kessil
