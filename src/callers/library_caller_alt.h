#pragma once

#include "callers/loaded_libraries.h"
#include "channel/records.h"
#include "marshal/signature_row.h"

#include <span>

namespace kessil {

/// Serves 'l' and 'f' requests, the second generation: as CLibraryCaller does, with libraries of its own, but without
/// frames. Its own answers are bare 32-bit values: 1 for a library that was loaded, -1 for a failure. Only the log has
/// the reason.
class CLibraryCallerAlt
{
public:
    /// `rows` must outlive the object.
    CLibraryCallerAlt(std::span<const SignatureRow> rows, AfterLoadHook after_load);

    /// Loads a library under its name. A library of exactly that name is released first, also when the load then fails.
    /// A library stays loaded when the answer can't be written.
    void LoadLibraryW(const WideString &name, CIPCCommunication &channel);

    /// Runs the handler of the request's signature on the export that it names. Library, export and signature are
    /// looked up in that order; if one is missing the answer is -1, in the place of the handler's first value.
    void CallFunction(const IPCStruct_FunctionCallAlt &request, CIPCCommunication &channel);

    /// Releases the libraries; see LoadedLibraries::ReleaseAll.
    void ReleaseLibraries() { m_libraries.ReleaseAll(); }

private:
    LoadedLibraries m_libraries;
    std::span<const SignatureRow> m_rows;
    AfterLoadHook m_afterLoad;
};

} // namespace kessil
