#include "rows/exports.h"
#include "targets/mapi_recorder.h"

namespace kessil::test {

const Exports &MapiExports()
{
    static const Exports exports = {
        KESSIL_TEST_EXPORT(MapiCreate),
        KESSIL_TEST_EXPORT(MapiDelete),
        KESSIL_TEST_EXPORT(MapiRestore),
        KESSIL_TEST_EXPORT(MapiFindFolder),
        KESSIL_TEST_EXPORT(MapiOpenFolderSearch),
        KESSIL_TEST_EXPORT(MapiGetNextFolder),
        KESSIL_TEST_EXPORT(MapiCloseSearch),
        KESSIL_TEST_EXPORT(MapiOpenMailSearch),
        KESSIL_TEST_EXPORT(MapiGetNextMail),
        KESSIL_TEST_EXPORT(MapiGetNextMails),
        KESSIL_TEST_EXPORT(MapiReadMail),
        KESSIL_TEST_EXPORT(MapiWriteMail),
        KESSIL_TEST_EXPORT(MapiCloseMail),
        KESSIL_TEST_EXPORT(MapiLoginProfile),
        KESSIL_TEST_EXPORT(MapiCreateProfileWithIProfAdmin),
        KESSIL_TEST_EXPORT(MapiDeleteProfile),
        KESSIL_TEST_EXPORT(MapiOpenMail),
        KESSIL_TEST_EXPORT(MapiGetLastError),
        KESSIL_TEST_EXPORT(MapiBackupDLLVersion),
        KESSIL_TEST_EXPORT(MapiChangeDupID),
    };
    return exports;
}

} // namespace kessil::test
