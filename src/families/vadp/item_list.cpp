#include "families/vadp/item_list.h"

#include "channel/pipe_primitives.h"
#include "families/vadp/binding.h"
#include "logging/log_manager.h"

namespace kessil {
namespace {

constexpr std::int32_t marker = -999;

bool WriteItem(CIPCCommunication &channel, const tag_item_data &item, bool with_extra)
{
    return WriteStringToPipe(channel, item.item_name) && WriteUInt64ToPipe(channel, item.item_value) &&
           WriteInt32ToPipe(channel, item.item_number) && (!with_extra || WriteInt32ToPipe(channel, item.item_extra));
}

} // namespace

bool writeItemList(CIPCCommunication &channel, const AdapterListing &list, bool with_extra, bool with_marker)
{
    const auto count = static_cast<std::int32_t>(list.size());
    KESSIL_LOG(log_debug, vadp_component, "Writing n_items==" << count);
    if ((with_marker && !WriteInt32ToPipe(channel, marker)) || !WriteInt32ToPipe(channel, count)) {
        KESSIL_LOG(log_error, vadp_component, "Failed to write n items");
        return false;
    }
    for (const tag_item_data &item : list) {
        if (!WriteItem(channel, item, with_extra))
            return false;
    }
    return true;
}

} // namespace kessil
