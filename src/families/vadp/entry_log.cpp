#include "families/vadp/entry_log.h"

#include "families/vadp/binding.h"
#include "logging/log_manager.h"

namespace kessil {

void LogEntry(const char *handler, EntryLog entry)
{
    if (entry == EntryLog::Line)
        KESSIL_LOG(log_debug, vadp_component, handler << "()");
}

} // namespace kessil
