#include "rows/exports.h"
#include "targets/ese_recorder.h"

namespace kessil::test {

const Exports &EseExports()
{
    static const Exports exports = {
        KESSIL_TEST_EXPORT(HrESEBackupPrepare),
        KESSIL_TEST_EXPORT(HrESEBackupSetup),
        KESSIL_TEST_EXPORT(HrESEBackupOpenFile),
        KESSIL_TEST_EXPORT(HrESEBackupReadFile),
        KESSIL_TEST_EXPORT(HrESEBackupCloseFile),
        KESSIL_TEST_EXPORT(HrESEBackupGetLogAndPatchFiles),
        KESSIL_TEST_EXPORT(HrESEBackupTruncateLogs),
        KESSIL_TEST_EXPORT(HrESEBackupInstanceEnd),
        KESSIL_TEST_EXPORT(HrESEBackupEnd),
        KESSIL_TEST_EXPORT(HrESEBackupRestoreGetRegistered),
        KESSIL_TEST_EXPORT(HrESERestoreOpen),
        KESSIL_TEST_EXPORT(HrESERestoreReopen),
        KESSIL_TEST_EXPORT(HrESERestoreAddDatabase),
        KESSIL_TEST_EXPORT(HrESERestoreOpenFile),
        KESSIL_TEST_EXPORT(HrESERestoreSaveEnvironment),
        KESSIL_TEST_EXPORT(HrESERestoreComplete),
        KESSIL_TEST_EXPORT(HrESERestoreClose),
    };
    return exports;
}

} // namespace kessil::test
