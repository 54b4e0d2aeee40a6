#include "target.h"

TARGET_EXPORT std::uint32_t GetBackupType()
{
    return 2;
}
