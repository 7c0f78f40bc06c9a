#include "host/screen/KeyMap.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

using screen::RemoteCode;

TEST(KeyMap, ThePageHasTheSameRows)
{
    std::ifstream page(NUVID_SOURCE "/docs/remote.md");
    std::string line;
    while (std::getline(page, line) && !line.starts_with("| --- ")) {
    }
    for (const auto& row : screen::kKeyMap) {
        char expected[128];
        std::snprintf(expected, sizeof expected, "| %s | %s | 0x%X | ", row.key, row.remote, unsigned(row.code));
        ASSERT_TRUE(std::getline(page, line));
        EXPECT_EQ(expected, line.substr(0, std::strlen(expected)));
    }
    EXPECT_TRUE(std::getline(page, line) && !line.starts_with("|")) << line;
}

TEST(KeyMap, LettersFollowTheLayout)
{
    EXPECT_EQ(Remote::kZoom, RemoteCode(SDL_SCANCODE_Y, SDLK_z));    // German
    EXPECT_EQ(0U, RemoteCode(SDL_SCANCODE_Z, SDLK_y));
    EXPECT_EQ(Remote::kZoom, RemoteCode(SDL_SCANCODE_Z, 0x44F));    // Cyrillic: by place
    EXPECT_EQ(Remote::kExit, RemoteCode(SDL_SCANCODE_ESCAPE, SDLK_ESCAPE));
    EXPECT_EQ(0U, RemoteCode(SDL_SCANCODE_5, SDLK_5));
}
