#pragma once

#include "families/signature_table.h"
#include "families/vadp/adapter_log.h"
#include "families/vadp/binding.h"
#include "families/vadp/handles.h"
#include "platform/module.h"
#include "rows/adapter_row.h"
#include "rows/expectations.h"
#include "rows/exports.h"
#include "unit/families/fakes_rig.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kessil::test {

/// The adapter's family on fakes, with the stand-in adapter in this process, and nothing left of earlier calls.
class AdapterTest : public ::testing::Test, protected FakesRig
{
protected:
    // Calls the handler with these bytes in the section.
    void CallWithSection(const std::string &function, const std::string &signature, const Bytes &bytes)
    {
        Give(bytes);
        FakesRig::Call(function, signature);
    }

    void Take(const std::vector<Step> &steps) { test::Take(*this, steps); }
};

} // namespace kessil::test
