#include "widgets/ListItems.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

namespace {

constexpr size_t kChunk = 64 * 1024;    // bytes of texts that are asked of the heap at once
constexpr size_t kMostIconSets = 0xFFFF;

const char* OrEmpty(const char* text)
{
    return text == nullptr ? "" : text;
}

}    // namespace

void ListItems::Clear()
{
    *this = ListItems();    // gives the memory back too: the next folder may be a small one
}

const char* ListItems::Keep(const char* text)
{
    const size_t size = std::strlen(text) + 1;
    if (size == 1) {
        return "";
    }
    if (m_nChunkSize - m_nChunkUsed < size) {
        m_nChunkSize = std::max(kChunk, size);
        m_Chunks.push_back(std::make_unique_for_overwrite<char[]>(m_nChunkSize));
        m_nBytesOfTexts += m_nChunkSize;
        m_nChunkUsed = 0;
    }
    char* const copy = m_Chunks.back().get() + m_nChunkUsed;
    std::memcpy(copy, text, size);
    m_nChunkUsed += size;
    return copy;
}

const char* ListItems::Intern(const char* text)
{
    const auto found = m_Interned.find(text);
    if (found != m_Interned.end()) {
        return found->second;
    }
    const char* const copy = Keep(text);
    m_Interned.emplace(copy, copy);
    return copy;
}

int ListItems::Add(const char* name)
{
    m_Items.emplace_back().name = Keep(OrEmpty(name));
    return Count() - 1;
}

void ListItems::Remove(int item)
{
    if (Has(item)) {
        m_Items.erase(m_Items.begin() + item);
    }
}

const ListItems::Cell* ListItems::FindCell(int item, int column) const
{
    for (uint32_t at = m_Items[static_cast<size_t>(item)].firstCell; at != 0; at = m_Cells[at - 1].next) {
        if (m_Cells[at - 1].column == column) {
            return &m_Cells[at - 1];
        }
    }
    return nullptr;
}

void ListItems::SetText(int item, int column, const char* text)
{
    if (!Has(item) || column < 0 || column >= kMaxColumns || std::strcmp(GetText(item, column), OrEmpty(text)) == 0) {
        return;
    }
    Item& changed = m_Items[static_cast<size_t>(item)];
    if (column == 0) {
        changed.name = Keep(OrEmpty(text));
    } else if (const Cell* const cell = FindCell(item, column)) {
        const_cast<Cell*>(cell)->text = Keep(OrEmpty(text));
    } else {
        m_Cells.push_back({Keep(text), changed.firstCell, static_cast<uint8_t>(column)});
        changed.firstCell = static_cast<uint32_t>(m_Cells.size());
    }
}

const char* ListItems::GetText(int item, int column) const
{
    if (!Has(item)) {
        return "";
    }
    if (column == 0) {
        return m_Items[static_cast<size_t>(item)].name;
    }
    const Cell* const cell = FindCell(item, column);
    return cell == nullptr ? "" : cell->text;
}

void ListItems::SetTag(int item, const char* tag)
{
    if (Has(item)) {
        m_Items[static_cast<size_t>(item)].tag = Keep(OrEmpty(tag));
    }
}

const char* ListItems::GetTag(int item) const
{
    return Has(item) ? m_Items[static_cast<size_t>(item)].tag : "";
}

void ListItems::SetThumbnail(int item, const char* path)
{
    if (Has(item)) {
        m_Items[static_cast<size_t>(item)].thumbnail = Keep(OrEmpty(path));
    }
}

const char* ListItems::GetThumbnail(int item) const
{
    return Has(item) ? m_Items[static_cast<size_t>(item)].thumbnail : "";
}

// A list has a handful of sets, and neighbours mostly share theirs: looked for from the latest on.
void ListItems::SetIcons(int item, const char* small, const char* large, const char* extraLarge)
{
    if (!Has(item)) {
        return;
    }
    const Icons wanted = {OrEmpty(small), OrEmpty(large), OrEmpty(extraLarge)};
    const auto same = [&](const Icons& set) {
        return std::equal(set.begin(), set.end(), wanted.begin(), [](const char* a, const char* b) { return std::strcmp(a, b) == 0; });
    };
    const auto found = std::find_if(m_IconSets.rbegin(), m_IconSets.rend(), same);
    auto number = static_cast<size_t>(m_IconSets.rend() - found);
    if (found == m_IconSets.rend() && m_IconSets.size() < kMostIconSets) {
        m_IconSets.push_back({Intern(wanted[0]), Intern(wanted[1]), Intern(wanted[2])});
        number = m_IconSets.size();
    }
    m_Items[static_cast<size_t>(item)].icons = static_cast<uint16_t>(number);
}

ListItems::Icons ListItems::GetIcons(int item) const
{
    const size_t number = Has(item) ? m_Items[static_cast<size_t>(item)].icons : 0;
    return number == 0 ? Icons {"", "", ""} : m_IconSets[number - 1];
}

void ListItems::SetMark(int item, bool mark)
{
    if (Has(item)) {
        m_Items[static_cast<size_t>(item)].mark = mark;
    }
}

bool ListItems::GetMark(int item) const
{
    return Has(item) && m_Items[static_cast<size_t>(item)].mark;
}

int ListItems::FindTag(const char* tag) const
{
    const auto found = std::find_if(m_Items.begin(), m_Items.end(), [&](const Item& item) { return std::strcmp(item.tag, OrEmpty(tag)) == 0; });
    return found == m_Items.end() ? -1 : static_cast<int>(found - m_Items.begin());
}

int ListItems::FindText(int column, const char* text) const
{
    for (int item = 0; item < Count(); ++item) {
        if (std::strcmp(GetText(item, column), OrEmpty(text)) == 0) {
            return item;
        }
    }
    return -1;
}

int ListItems::FindPrefix(const char* prefix) const
{
    const size_t length = std::strlen(OrEmpty(prefix));
    const auto begins = [&](const Item& item) { return strncasecmp(item.name, prefix, length) == 0; };
    const auto found = length == 0 ? m_Items.end() : std::find_if(m_Items.begin(), m_Items.end(), begins);
    return found == m_Items.end() ? -1 : static_cast<int>(found - m_Items.begin());
}

size_t ListItems::BytesHeld() const
{
    return m_nBytesOfTexts + m_Items.capacity() * sizeof(Item) + m_Cells.capacity() * sizeof(Cell) + m_IconSets.capacity() * sizeof(Icons);
}
