#include "adapter_record.h"

#include <cstdlib>
#include <sstream>
#include <thread>

namespace {

AdapterLoggingCallBack callback = nullptr;

void Log(const std::string &text, std::uint64_t level)
{
    if (callback != nullptr)
        callback(text.c_str(), static_cast<unsigned char>(level));
}

template <class Pointer>
Pointer Address(std::uint64_t number)
{
    return reinterpret_cast<Pointer>(static_cast<std::uintptr_t>(number));
}

std::uint64_t NextNumber(std::istream &fields)
{
    std::string field;
    std::getline(fields, field, ':');
    return std::strtoull(field.c_str(), nullptr, 0);
}

tag_item_data Item(const std::string &text)
{
    std::istringstream fields(text);
    tag_item_data item;
    std::getline(fields, item.item_name, ':');
    item.item_number = static_cast<std::int32_t>(NextNumber(fields));
    item.item_value = NextNumber(fields);
    item.item_extra = static_cast<std::int32_t>(NextNumber(fields));
    return item;
}

AdapterListing *Items(const std::string &text)
{
    auto *const listing = new AdapterListing;
    std::istringstream items(text);
    for (std::string item; std::getline(items, item, ',');)
        listing->push_back(Item(item));
    return listing;
}

std::string error_text;

} // namespace

AdapterRecord &AdapterRecord::Number(const char *name, std::uint64_t value)
{
    m_call.Number(name, value);
    return *this;
}

AdapterRecord &AdapterRecord::Text(const char *name, const char *value)
{
    m_call.Text(name, value);
    return *this;
}

AdapterRecord &AdapterRecord::Data(const char *name, const void *data, std::size_t size)
{
    m_call.Data(name, data, size);
    return *this;
}

AdapterRecord &AdapterRecord::Peek(const char *name, const void *data)
{
    return Data(name, data, m_call.Script().peek.value_or(0));
}

AdapterRecord &AdapterRecord::Object(const char *name, const void *object)
{
    if (object == nullptr)
        m_call.Pointer(name, object);
    else
        m_call.Handle(name, reinterpret_cast<std::uintptr_t>(object));
    return *this;
}

AdapterRecord &AdapterRecord::Objects(const char *name, void *const *object)
{
    return Object(name, *object);
}

AdapterRecord &AdapterRecord::Listing(const char *name, AdapterListing *const *listing)
{
    return Object(name, *listing);
}

AdapterRecord &AdapterRecord::Error(VMLib_ErrorInfo *const *error)
{
    return *error == nullptr ? *this : Object("error", *error);
}

AdapterRecord &AdapterRecord::Done()
{
    m_call.Done();
    const std::uint64_t level = Script().NumberOf("level").value_or(0);
    if (const auto text = Script().TextOf("log"))
        Log(*text, level);
    if (const auto text = Script().TextOf("thread_log"))
        std::thread(Log, *text, level).join();
    return *this;
}

const AdapterRecord &AdapterRecord::OutObject(const char *name, void **object) const
{
    if (const auto number = Script().NumberOf(name))
        *object = Address<void *>(*number);
    return *this;
}

const AdapterRecord &AdapterRecord::OutListing(AdapterListing **listing) const
{
    if (const auto items = Script().TextOf("items"))
        *listing = Items(*items);
    else if (const auto number = Script().NumberOf("listing"))
        *listing = Address<AdapterListing *>(*number);
    return *this;
}

const AdapterRecord &AdapterRecord::OutError(VMLib_ErrorInfo **error) const
{
    if (const auto number = Script().NumberOf("error"))
        *error = Address<VMLib_ErrorInfo *>(*number);
    return *this;
}

const AdapterRecord &AdapterRecord::Fill(const char *name, void *data) const
{
    m_call.Fill(name, data);
    return *this;
}

// The text is what the script has as `text`, the rest of its line; null where it has none.
const char *GetErrorMessage(VMLib_ErrorInfo *error)
{
    AdapterRecord call("GetErrorMessage");
    call.Object("error", error).Done();
    error_text = call.Script().text.value_or("");
    return call.Script().text ? error_text.c_str() : nullptr;
}

// The text is gone, too.
void FreeErrorInfo(VMLib_ErrorInfo **error)
{
    AdapterRecord("FreeErrorInfo").Object("error", *error).Done();
    error_text.assign(error_text.size(), '#');
    *error = nullptr;
}

void SetLoggingCallBack(AdapterLoggingCallBack given)
{
    callback = given;
}
