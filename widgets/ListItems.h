// The items of a list: texts by column, tags, thumbnails and icons, held close together, so that fifty thousand of
// them cost some ten megabytes and are gone at once.
//
// Errors:    an index outside is ignored and answers "" or -1.
// Threads:   one thread at a time.
// Ownership: owns copies of the texts, which stay where they are until Clear.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

class ListItems {
public:
    static constexpr int kMaxColumns = 8;
    using Icons = std::array<const char*, 3>;    // small, large, extra large; never null

    int Count() const { return static_cast<int>(m_Items.size()); }
    void Clear();
    int Add(const char* name);    // the name is column 0
    void Remove(int item);    // those behind it move up; its texts stay until Clear

    void SetText(int item, int column, const char* text);
    const char* GetText(int item, int column) const;
    void SetTag(int item, const char* tag);
    const char* GetTag(int item) const;
    void SetThumbnail(int item, const char* path);
    const char* GetThumbnail(int item) const;
    void SetIcons(int item, const char* small, const char* large, const char* extraLarge);
    Icons GetIcons(int item) const;
    void SetMark(int item, bool mark);
    bool GetMark(int item) const;

    int FindTag(const char* tag) const;
    int FindText(int column, const char* text) const;
    int FindPrefix(const char* prefix) const;    // in column 0; case of ASCII letters does not count

    size_t BytesHeld() const;

private:
    struct Cell {
        const char* text;
        uint32_t next;    // of the same item, index into m_Cells + 1; 0: none
        uint8_t column;
    };
    struct Item {
        const char* name = "";
        const char* tag = "";
        const char* thumbnail = "";
        uint32_t firstCell = 0;    // index into m_Cells + 1; 0: none
        uint16_t icons = 0;    // index into m_IconSets + 1; 0: none
        bool mark = false;
    };

    const char* Keep(const char* text);    // a copy that lives until Clear
    const char* Intern(const char* text);    // one copy of equal texts
    bool Has(int item) const { return item >= 0 && item < Count(); }
    const Cell* FindCell(int item, int column) const;

    std::vector<Item> m_Items;
    std::vector<Cell> m_Cells;    // of the columns after the name
    std::vector<Icons> m_IconSets;
    std::vector<std::unique_ptr<char[]>> m_Chunks;
    size_t m_nChunkUsed = 0;
    size_t m_nChunkSize = 0;
    size_t m_nBytesOfTexts = 0;
    std::unordered_map<std::string_view, const char*> m_Interned;
};
