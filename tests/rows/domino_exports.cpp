#include "rows/exports.h"
#include "targets/domino_recorder.h"

namespace kessil::test {

const Exports &DominoExports()
{
    static const Exports exports = {
        KESSIL_TEST_EXPORT(DominoGetSession),        KESSIL_TEST_EXPORT(DominoCloseSession),
        KESSIL_TEST_EXPORT(DominoFindFirstDatabase), KESSIL_TEST_EXPORT(DominoFindNextDatabase),
        KESSIL_TEST_EXPORT(DominoGetDatabaseInfo),   KESSIL_TEST_EXPORT(DominoCopyDatabase),
        KESSIL_TEST_EXPORT(DominoGetErrorMessage),   KESSIL_TEST_EXPORT(DominoSetPassword),
        KESSIL_TEST_EXPORT(DominoGetNotesVersion),
    };
    return exports;
}

} // namespace kessil::test
