#include "parent/adapter/adapter_state.h"
#include "parent/adapter/command.h"
#include "parent/adapter/section_command.h"
#include "parent/session/calls.h"

namespace kessil::parent {

Answer Adapter::GetLibraryVersion(std::string &version)
{
    Command command(*m_state, 127, "GetLibraryVersion");
    command.Send();
    command.ReadFirstText(version);
    return command.End();
}

Answer Adapter::CreateCredentials(std::string_view first, std::string_view second)
{
    return Command(*m_state, 3, "CreateCredentials").Secret().Text(first).Text(second).AskStatus();
}

Answer Adapter::CreateBackupOptions(const std::array<bool, 5> &flags, std::string_view sixth, BackupOptions &options)
{
    Command command(*m_state, 4, "CreateBackupOptions");
    for (const bool flag : flags)
        command.Flag(flag);
    return command.WholeText(sixth).AskHandle(options);
}

Answer Adapter::OpenListing(std::string_view path, std::uint32_t listing_opts, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 5, "OpenListing").Text(path).U32(listing_opts).AskListing(items, ItemForm::WithExtra);
}

Answer Adapter::NextItem(Listing listing, AdapterItem &item)
{
    if (Answer answer = LoadForListings(); !answer)
        return answer;
    SectionCommand command(*m_state, "NextItem", "SIGNATURE_VADPNextItem");
    command.In().U32(Sent(listing));
    std::uint32_t number = 0;
    std::uint32_t extra = 0;
    command.Ask().Str(item.name).U32(number).U64(item.value).U32(extra).Str(command.Error());
    item.number = static_cast<std::int32_t>(number);
    item.extra = static_cast<std::int32_t>(extra);
    return command.End();
}

Answer Adapter::FreeListing(Listing listing)
{
    if (Answer answer = LoadForListings(); !answer)
        return answer;
    SectionCommand command(*m_state, "FreeListing", "SIGNATURE_VADPFreeListing");
    command.In().U32(Sent(listing));
    command.Ask();
    return command.End();
}

Answer Adapter::LoadForListings()
{
    const WideString library(m_state->session.AdapterName());
    Result result{};
    if (!library.empty() && library != m_state->listed) {
        result = parent::Load(m_state->session, library);
        if (result)
            m_state->listed = library;
    }
    return MakeAnswer(std::move(result), true, {}, {});
}

Answer Adapter::ListDataStores(std::string_view first, std::string_view second, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 13, "ListDataStores").Text(first).Text(second).AskListing(items, ItemForm::Short);
}

Answer Adapter::ListFolders(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 38, "ListFolders").Text(path).AskListing(items, ItemForm::WithExtra);
}

Answer Adapter::ListHosts(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 37, "ListHosts").Text(path).AskListing(items, ItemForm::Short);
}

Answer Adapter::ListDatacenters(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 36, "ListDatacenters").Text(path).AskListing(items, ItemForm::Short);
}

Answer Adapter::ListMachines(std::string_view path, std::vector<AdapterItem> &items)
{
    return Command(*m_state, 39, "ListMachines").Text(path).AskListing(items, ItemForm::Short);
}

Answer Adapter::ListResourcePools(std::string_view path, Listing &listing)
{
    SectionCommand command(*m_state, 14, "ListResourcePools");
    command.In().Str(path);
    return command.AskHandle(listing);
}

Answer Adapter::OpenConfigRead(RestoreSession session, std::string_view path, RestoreFile &reader)
{
    SectionCommand command(*m_state, 47, "OpenConfigRead");
    command.In().U32(Sent(session)).Str(path);
    return command.AskHandle(reader);
}

Answer Adapter::ListConfigItems(RestoreSession session, Listing &listing)
{
    SectionCommand command(*m_state, 46, "ListConfigItems");
    command.In().U32(Sent(session));
    return command.AskHandle(listing);
}

Answer Adapter::CreateListingCache(std::string_view path, std::uint16_t &flag)
{
    SectionCommand command(*m_state, 27, "CreateListingCache");
    command.In().Str(path);
    command.Ask().U16(flag).Str(command.Error());
    return command.End();
}

} // namespace kessil::parent
