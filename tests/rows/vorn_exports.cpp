#include "rows/exports.h"
#include "targets/vorn_recorder.h"

namespace kessil::test {

const Exports &VornExports()
{
    static const Exports exports = {
        KESSIL_TEST_EXPORT(VornCreateSession),  KESSIL_TEST_EXPORT(VornCloseSession),
        KESSIL_TEST_EXPORT(VornCreateDir),      KESSIL_TEST_EXPORT(VornOpenDir),
        KESSIL_TEST_EXPORT(VornGetNextDirItem), KESSIL_TEST_EXPORT(VornCloseDir),
        KESSIL_TEST_EXPORT(VornCreateFile),     KESSIL_TEST_EXPORT(VornOpenFile),
        KESSIL_TEST_EXPORT(VornReadFile),       KESSIL_TEST_EXPORT(VornWriteFile),
        KESSIL_TEST_EXPORT(VornRestoreFile),    KESSIL_TEST_EXPORT(VornCloseFile),
        KESSIL_TEST_EXPORT(VornGetErrorText),   KESSIL_TEST_EXPORT(GetLibApiVersion),
        KESSIL_TEST_EXPORT(GetBackupType),
    };
    return exports;
}

} // namespace kessil::test
