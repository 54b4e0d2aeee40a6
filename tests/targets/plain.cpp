#include "target.h"

TARGET_EXPORT std::uint32_t Answer()
{
    return 42;
}

TARGET_EXPORT std::uint32_t GetBackupType()
{
    return 7;
}

TARGET_EXPORT std::uint32_t GetLibApiVersion()
{
    return 2;
}
