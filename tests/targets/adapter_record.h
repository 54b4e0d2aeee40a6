#pragma once

#include "recorded_call.h"

#include <kessil/adapter_interface.h>

#include <cstdint>
#include <string>

/// One call of the stand-in adapter while it runs. Beyond what RecordedCall takes from the script:
///
///     result=1               the call succeeds; 0 where the script says nothing
///     <object>=0x501         stored through the address of an object's pointer
///     listing=0x301          stored as the listing, which nobody may look behind
///     items=a:1:2:3,b:4:5:6  a listing of these: name:item_number:item_value:item_extra; `items=` is one without items
///     error=0x99             stored as the error record
///     log=text level=7       a line of the log, in the middle of the call
///     thread_log=text        the same from a thread of the adapter's own
///
/// Addresses are recorded by what lies there when the call begins.
class AdapterRecord
{
public:
    explicit AdapterRecord(const char *function) : m_call(function) {}

    AdapterRecord &Number(const char *name, std::uint64_t value);
    AdapterRecord &Text(const char *name, const char *value);
    AdapterRecord &Data(const char *name, const void *data, std::size_t size);

    /// As many bytes as the script has under `peek`, for data whose length is not passed.
    AdapterRecord &Peek(const char *name, const void *data);

    /// `null`, or hexadecimal behind 0x.
    AdapterRecord &Object(const char *name, const void *object);
    AdapterRecord &Objects(const char *name, void *const *object);
    AdapterRecord &Listing(const char *name, AdapterListing *const *listing);

    /// Recorded only where it isn't null, as it always should be.
    AdapterRecord &Error(VMLib_ErrorInfo *const *error);

    /// Writes the line, then logs what the script has for the adapter's log.
    AdapterRecord &Done();

    bool Succeeds() const { return m_call.Result() != 0; }
    std::uint32_t Result32() const { return m_call.Result32(); }

    // What the script has is stored; what it hasn't stays as it is.

    template <class T>
    const AdapterRecord &Out(const char *name, T *out) const
    {
        m_call.Out(name, out);
        return *this;
    }
    const AdapterRecord &OutObject(const char *name, void **object) const;
    const AdapterRecord &OutListing(AdapterListing **listing) const;
    const AdapterRecord &OutError(VMLib_ErrorInfo **error) const;
    const AdapterRecord &Fill(const char *name, void *data) const;

    const Behaviour &Script() const { return m_call.Script(); }

private:
    RecordedCall m_call;
};
