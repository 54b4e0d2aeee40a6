#pragma once

#include "protocol/helper_rig.h"
#include "rows/expectations.h"

#include <gtest/gtest.h>

#include <string>

namespace kessil::test {

/// A helper that has loaded the stand-in adapter, in which a row's steps have been taken and their record is forgotten.
/// The row's script may have a line for each call.
class AdapterTalk : public HelperRig
{
public:
    template <class AnyRow>
    explicit AdapterTalk(const AnyRow &row) : HelperRig(adapter_library)
    {
        Take(*this, row.before);
        ScriptLines(row.function + " " + row.script + "\nGetErrorMessage text=" + row.error_text + "\n");
    }

    /// Announces a section of these bytes, and asks for the call.
    test::Section &CallWithSection(const std::string &function, const std::string &signature, const Bytes &bytes)
    {
        Give(bytes);
        Call(function, signature);
        return TheSection();
    }
};

} // namespace kessil::test
