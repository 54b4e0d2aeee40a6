#pragma once

#include "families/signature_table.h"
#include "families/vadp/adapter_log.h"
#include "families/vadp/binding.h"
#include "families/vadp/handles.h"
#include "platform/module.h"
#include "rows/adapter_row.h"
#include "rows/exports.h"
#include "unit/channel_fixture.h"
#include "unit/families/stand_in.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace kessil::test {

/// The family on fakes, with the stand-in adapter in this process, and nothing left of earlier calls.
class AdapterTest : public ChannelTest
{
protected:
    AdapterTest() { Reset(); }

    // Everything begins anew.
    void Reset()
    {
        stand_in = StandIn();
        for (HandleTable *const table : {&g_vBackupOptions, &g_vListing, &g_vACLInfo, &g_vBackupSession,
                                         &g_vRestoreSession, &g_vBackupFile, &g_vRestoreFile})
            table->Reset();
        g_mACLInfoIndex.clear();
        g_pCredentials = g_pListingCache = g_pDisk = nullptr;
        Unbind();
        sendAdapterLogAlt(channel);
        fake_module.Add(adapter, AdapterExports());
        module = platform::LoadModule(adapter);
        bindAdapterFunctions(channel, adapter, module);
        Forget();
    }

    static void Unbind()
    {
        g_pfnGetErrorMessage = nullptr;
        g_pfnFreeErrorInfo = nullptr;
        g_pfnFreeCredentials = nullptr;
        g_pfnSetLoggingCallBack = nullptr;
    }

    static SignatureRow Handlers(const std::string &signature)
    {
        const auto rows = SignatureTable();
        const auto found =
            std::find_if(rows.begin(), rows.end(), [&](const auto &row) { return signature == row.signature; });
        if (found == rows.end()) {
            ADD_FAILURE() << "no signature " << signature;
            return {};
        }
        return *found;
    }

    // Calls the handler with these bytes in the section, behind them EE.
    void CallWithSection(const std::string &function, const std::string &signature, const Bytes &bytes)
    {
        GiveSection(u"s" + WideString(1, static_cast<char16_t>(u'0' + m_sections++ % 10)), bytes);
        const Handler handler = Handlers(signature).first;
        ASSERT_NE(handler, nullptr) << signature;
        handler(channel, AdapterExports().at(function));
    }

    // Calls the handler with these bytes on the pipe, which ends there.
    void CallWithValues(const std::string &function, const std::string &signature, const Bytes &bytes)
    {
        if (!bytes.empty())
            fake_pipe.Deliver(bytes);
        const Handler handler = Handlers(signature).second;
        ASSERT_NE(handler, nullptr) << signature;
        handler(channel, AdapterExports().at(function));
    }

    void Take(const std::vector<Step> &steps)
    {
        for (const Step &step : steps) {
            stand_in.script[step.function] = step.script;
            CallWithSection(step.function, step.signature, Joined(step.in) + Repeat(0xEE, spare));
            ASSERT_EQ(fake_pipe.written, SuccessFrame()) << step.function;
            Forget();
        }
        stand_in.lines.clear();
    }

    template <class Row>
    void Write(const Row &row)
    {
        stand_in.script[row.function] = row.script;
        stand_in.script["GetErrorMessage"] = "text=" + row.error_text;
    }

    static Bytes Joined(const std::vector<std::string> &elements)
    {
        Bytes bytes;
        for (const std::string &element : elements)
            bytes = bytes + Hex(element);
        return bytes;
    }

    // The log of the family's own component.
    static std::vector<std::string> FamilyLog()
    {
        std::vector<std::string> lines;
        for (const std::string &record : Logged()) {
            const std::string component = std::string(" ") + vadp_component;
            const std::size_t at = record.find(component + ": ");
            if (at != std::string::npos)
                lines.push_back(record.substr(0, at) + record.substr(at + component.size()));
        }
        return lines;
    }

    static constexpr std::size_t spare = 4096;
    const WideString adapter = u"tarnlink_windows_x64.dll";
    platform::ModuleHandle module = nullptr;

private:
    int m_sections = 0;
};

/// Base of the suites over rows of the first generation.
class AdapterRowTest : public AdapterTest, public ::testing::WithParamInterface<AdapterRow>
{
protected:
    void ExpectAnswer(const AdapterRow &row)
    {
        Take(row.before);
        Write(row);
        const Bytes before = Joined(row.in) + Repeat(0xEE, spare);
        CallWithSection(row.function, row.signature, before);
        EXPECT_EQ(fake_pipe.written, Hex(row.frames) + SuccessFrame());
        ExpectSection(Hex(row.out), before);
        EXPECT_EQ(stand_in.lines, row.seen);
        EXPECT_EQ(FamilyLog(), row.logged);
    }

    // Nothing gives error texts: that is told, and the answer follows all the same, its error text empty.
    void ExpectDoubleAnswer(const AdapterRow &row)
    {
        Take(row.before);
        Write(row);
        Unbind();
        const Bytes before = Joined(row.in) + Repeat(0xEE, spare);
        CallWithSection(row.function, row.signature, before);
        const Bytes refusal = FailureFrame(row.error_failure);
        EXPECT_NE(std::search(fake_pipe.written.begin(), fake_pipe.written.end(), refusal.begin(), refusal.end()),
                  fake_pipe.written.end());
        EXPECT_EQ(fake_pipe.written.size(), refusal.size() + Hex(row.frames).size() + SuccessFrame().size());
        EXPECT_EQ(Bytes(fake_pipe.written.end() - 5, fake_pipe.written.end()), SuccessFrame());
        Bytes out = Hex(row.out);
        out.resize(out.size() - row.error_text.size() - 1);
        ExpectSection(out + Bytes{0}, before);
    }

    // The in-list cut before each of its elements in turn.
    void ExpectRefusedInput(const AdapterRow &row)
    {
        Take(row.before);
        for (std::size_t elements = 0; elements < row.in.size(); ++elements) {
            Forget();
            CallWithSection(row.function, row.signature,
                            Joined({row.in.begin(), row.in.begin() + static_cast<std::ptrdiff_t>(elements)}));
            EXPECT_EQ(fake_pipe.written, FailureFrame(row.input_failure)) << elements;
            EXPECT_EQ(stand_in.lines, std::vector<std::string>()) << elements;
        }
    }

    // While the function runs, the section is replaced by one without room, and the parent refuses a larger one. What
    // the library would write into is gone then, and so it only succeeds.
    void ExpectRefusedOutput(const AdapterRow &row)
    {
        Take(row.before);
        Write(row);
        if (row.script.find("data=") != std::string::npos)
            stand_in.script[row.function] = "result=1";
        bool taken = false;
        stand_in.on_call = [&] {
            if (std::exchange(taken, true))
                return;
            GiveSection(u"tiny", Bytes());
            fake_pipe.Deliver(FailureFrame(u"no room"));
        };
        CallWithSection(row.function, row.signature, Joined(row.in));
        EXPECT_TRUE(taken || row.output_failure.empty());
        const Bytes refusal = row.output_failure.empty() ? SuccessFrame() : FailureFrame(row.output_failure);
        ASSERT_GE(fake_pipe.written.size(), refusal.size());
        const auto end_of_growth = fake_pipe.written.end() - static_cast<std::ptrdiff_t>(refusal.size());
        EXPECT_EQ(Bytes(end_of_growth, fake_pipe.written.end()), refusal);
        EXPECT_FALSE(stand_in.lines.empty());
        if (row.output_failure.empty())
            return;
        ASSERT_GE(end_of_growth - fake_pipe.written.begin(), 8);
        EXPECT_EQ(Bytes(end_of_growth - 8, end_of_growth), Be64(row.room));
    }

private:
    void ExpectSection(const Bytes &out, const Bytes &before)
    {
        ASSERT_LE(out.size(), before.size());
        EXPECT_EQ(Section(before.size()), out + Behind(out.size(), before));
    }
};

/// Base of the suites over rows of the second generation.
class CommandRowTest : public AdapterTest, public ::testing::WithParamInterface<CommandRow>
{
protected:
    void ExpectAnswer(const CommandRow &row)
    {
        Take(row.before);
        Write(row);
        CallWithValues(row.function, row.signature, Values(row, row.in.size()));
        EXPECT_EQ(fake_pipe.written, Hex(row.reply));
        EXPECT_EQ(stand_in.lines, row.seen);
        EXPECT_EQ(FamilyLog(), row.logged);
        EXPECT_TRUE(fake_pipe.IsReadOut());
    }

    // The pipe ends before each of the values in turn.
    void ExpectCuts(const CommandRow &row)
    {
        ASSERT_EQ(row.cuts.size(), row.in.size());
        for (std::size_t value = 0; value < row.in.size(); ++value) {
            Reset();
            Take(row.before);
            Write(row);
            fake_pipe.ends_quietly = true;
            CallWithValues(row.function, row.signature, Values(row, value));
            EXPECT_EQ(fake_pipe.written, Hex(row.cuts[value].reply)) << value;
            EXPECT_EQ(stand_in.lines, row.cuts[value].seen) << value;
        }
    }

private:
    static Bytes Values(const CommandRow &row, std::size_t count)
    {
        Bytes bytes;
        for (std::size_t value = 0; value < count; ++value)
            bytes = bytes + Hex(row.in[value].bytes);
        return bytes;
    }
};

template <class Row>
std::string NameOfAdapterRow(const ::testing::TestParamInfo<Row> &info)
{
    return info.param.function + "_" + std::to_string(info.index);
}

inline void PrintTo(const AdapterRow &row, std::ostream *out)
{
    *out << row.signature;
}

inline void PrintTo(const CommandRow &row, std::ostream *out)
{
    *out << row.signature;
}

} // namespace kessil::test
