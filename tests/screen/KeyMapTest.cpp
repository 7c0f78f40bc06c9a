#include "host/screen/KeyMap.h"

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using screen::RemoteCode;

namespace {

std::string Trimmed(const std::string& text)
{
    const size_t from = text.find_first_not_of(' ');
    return from == std::string::npos ? "" : text.substr(from, text.find_last_not_of(' ') - from + 1);
}

// The first one.
std::vector<std::vector<std::string>> TableOfPage(const std::string& path)
{
    std::ifstream page(path);
    std::vector<std::vector<std::string>> rows;
    for (std::string line; std::getline(page, line);) {
        if (line.starts_with("| ")) {
            std::vector<std::string> cells;
            for (size_t from = 1; from < line.size();) {
                const size_t to = line.find('|', from);
                cells.push_back(Trimmed(line.substr(from, to - from)));
                from = to + 1;
            }
            rows.push_back(cells);
        } else if (!rows.empty()) {
            break;
        }
    }
    return rows;
}

}    // namespace

TEST(KeyMap, ThePageHasTheSameRows)
{
    std::vector<std::vector<std::string>> page = TableOfPage(NUVID_SOURCE "/docs/remote.md");
    ASSERT_GT(page.size(), 2U);
    EXPECT_EQ((std::vector<std::string> {"Key", "Remote key", "Code", "While playing"}), page[0]);
    page.erase(page.begin(), page.begin() + 2);
    ASSERT_EQ(std::size(screen::kKeyMap), page.size());
    for (size_t i = 0; i < page.size(); ++i) {
        char code[16];
        std::snprintf(code, sizeof code, "0x%X", screen::kKeyMap[i].code);
        ASSERT_EQ(4U, page[i].size()) << "row " << i;
        EXPECT_EQ(screen::kKeyMap[i].key, page[i][0]);
        EXPECT_EQ(screen::kKeyMap[i].remote, page[i][1]);
        EXPECT_EQ(code, page[i][2]);
        EXPECT_FALSE(page[i][3].empty()) << page[i][0];
    }
}

TEST(KeyMap, EveryRemoteKeyCanBeHad)
{
    for (const uint32_t code : {Remote::kSelect, Remote::kUp, Remote::kDown, Remote::kLeft, Remote::kRight, Remote::kPlay, Remote::kPause,
             Remote::kPlayPause, Remote::kStop, Remote::kFastForward, Remote::kRewind, Remote::kNextChapter, Remote::kPrevChapter, Remote::kZoom,
             Remote::kMenu, Remote::kInfo, Remote::kExit, Remote::kPower, Remote::kPowerAlternate}) {
        EXPECT_TRUE(std::any_of(std::begin(screen::kKeyMap), std::end(screen::kKeyMap), [&](const auto& row) { return row.code == code; })) << code;
    }
}

TEST(KeyMap, LettersFollowTheLayout)
{
    EXPECT_EQ(Remote::kZoom, RemoteCode(SDL_SCANCODE_Y, SDLK_z));    // German
    EXPECT_EQ(0U, RemoteCode(SDL_SCANCODE_Z, SDLK_y));
    EXPECT_EQ(Remote::kZoom, RemoteCode(SDL_SCANCODE_Z, 0x44F));    // Cyrillic: by place
    EXPECT_EQ(Remote::kExit, RemoteCode(SDL_SCANCODE_ESCAPE, SDLK_ESCAPE));
    EXPECT_EQ(0U, RemoteCode(SDL_SCANCODE_5, SDLK_5));
}
