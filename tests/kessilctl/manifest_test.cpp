#include "kessilctl/console/exit_code.h"
#include "kessilctl/tree/manifest.h"

#include <gtest/gtest.h>

namespace kessil::kessilctl {
namespace {

const std::string digest(64, 'a');

TEST(Manifest, EscapesWhatBreaksALine)
{
    EXPECT_EQ(Format({{"files/plain  name", digest}}), digest + "  files/plain  name\n");
    EXPECT_EQ(Format({{"a\\b", digest}}), "\\" + digest + "  a\\\\b\n");
    EXPECT_EQ(Format({{"a\nb\rc", digest}}), "\\" + digest + "  a\\nb\\rc\n");
    EXPECT_EQ(Format({}), "");
}

TEST(Manifest, ReadsWhatItWrites)
{
    const Manifest manifest = {{"a", digest}, {"b\n\\n", std::string(64, '0')}, {" *c ", digest}};
    EXPECT_EQ(ParseManifest(Format(manifest)), manifest);
    EXPECT_EQ(ParseManifest(digest + " *binary"), (Manifest{{"binary", digest}}));
}

TEST(Manifest, NamesTheLineThatIsDamaged)
{
    const std::string good = digest + "  good\n";
    for (const std::string &bad : {std::string("x"), std::string("\n"), digest, digest + "  \n", digest + " one\n",
                                   std::string(64, 'G') + "  name\n", std::string(64, 'A') + "  name\n",
                                   "\\" + digest + "  a\\x\n", "\\" + digest + "  a\\\n", good}) {
        try {
            ParseManifest(good + bad);
            ADD_FAILURE() << bad;
        } catch (const Failure &failure) {
            EXPECT_EQ(failure.Code(), ExitCode::LocalFailed);
            EXPECT_STREQ(failure.what(), "line 2 of the manifest is damaged");
        }
    }
}

} // namespace
} // namespace kessil::kessilctl
