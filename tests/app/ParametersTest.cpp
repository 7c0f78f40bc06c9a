#include "app/Parameters.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class ParametersTest : public testing::Test, protected ParameterParser::Client {
protected:
    std::string Take(std::vector<const char*> arguments)
    {
        testing::internal::CaptureStdout();
        for (const char* argument : arguments) {
            m_Parser.Take(argument);
        }
        return testing::internal::GetCapturedStdout();
    }
    void SetVideoRes(unsigned index, int value) override { m_Calls.push_back("res " + std::to_string(index) + " " + std::to_string(value)); }
    void AddFile(const char* path, const CascadeString& title) override
    {
        m_Calls.push_back(std::string("file ") + path + " [" + title.Text() + "]");
    }

    StartOptions m_Options;
    std::vector<std::string> m_Calls;
    ParameterParser m_Parser {m_Options, *this};
};

TEST_F(ParametersTest, NumbersAreReadWithoutCheck)
{
    EXPECT_EQ(Take({"-minfilesize=60000000", "-VTSThreshold=12", "-infotimeout=5", "-fontsize=24"}), "");
    EXPECT_EQ(m_Options.minFileSize, 60000000U);
    EXPECT_EQ(m_Options.titleSetThreshold, 12U);
    EXPECT_EQ(m_Options.infoTimeoutMs, 5000U);
    EXPECT_EQ(m_Options.fontSize, 24);

    Take({"-minfilesize=-1", "-vtsthreshold=x", "-infotimeout=", "-fontsize=99999999999999999999"});
    EXPECT_EQ(m_Options.minFileSize, 0xFFFFFFFFU);
    EXPECT_EQ(m_Options.titleSetThreshold, 0U);
    EXPECT_EQ(m_Options.infoTimeoutMs, 0U);
    EXPECT_EQ(m_Options.fontSize, -1);    // the largest number, cut to 32 bits
}

TEST_F(ParametersTest, SwitchesAreComparedOverTheirFirstCharactersOnly)
{
    const struct {
        const char* argument;
        bool StartOptions::*member;
        bool value;
    } cases[]
        = {{"-noicons", &StartOptions::showIcons, false}, {"-HideSiz", &StartOptions::hideSize, true}, {"-menuoneof", &StartOptions::menuAtEnd, true},
            {"-exitatendofall", &StartOptions::exitAtEnd, true}, {"-NOMENU", &StartOptions::menuEnabled, false},
            {"-maxbuffer", &StartOptions::maxBuffer, true}, {"-nobrowserdelete", &StartOptions::browserDelete, false},
            {"-noresumeX", &StartOptions::resumeEnabled, false}, {"-browserwithback", &StartOptions::browserWithBack, true},
            {"-fixts", &StartOptions::tsFix, true}, {"-unattended", &StartOptions::unattended, true}};
    for (const auto& c : cases) {
        m_Options = StartOptions();
        ASSERT_NE(m_Options.*c.member, c.value) << c.argument;
        EXPECT_EQ(Take({c.argument}), "");
        EXPECT_EQ(m_Options.*c.member, c.value) << c.argument;
    }
    Take({"-LargeicXYZ"});
    EXPECT_EQ(m_Options.iconSize, 2);
}

TEST_F(ParametersTest, WhatIsTooShortOrUnknownIsToldAndSkipped)
{
    EXPECT_EQ(Take({"-largei", "-nomen", "-", "-x=1", "--volume"}),
        "Nuvid: unknown parameter largei\nNuvid: unknown parameter nomen\nNuvid: unknown parameter \n"
        "Nuvid: unknown parameter x=1\nNuvid: unknown parameter -volume\n");
    EXPECT_EQ(m_Options.iconSize, 0);
    EXPECT_TRUE(m_Options.menuEnabled);
    EXPECT_TRUE(m_Calls.empty());
}

TEST_F(ParametersTest, ATitleIsForTheNextFileAndResolutionsCountFromOne)
{
    Take({"-name=Film", "-noicons", "a.mpg", "b.mpg", "-NTSCRes=3", "-PALRes=", "", "-name=x", "-NAME=y", "c"});
    EXPECT_EQ(m_Calls, (std::vector<std::string> {"file a.mpg [Film]", "file b.mpg []", "res 1 2", "res 2 -1", "file  []", "file c [y]"}));
}

}    // namespace
