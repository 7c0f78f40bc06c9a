#include "app/Parameters.h"

#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kLargeIcons = 2;

long Number(const char* text)
{
    return std::strtol(text, nullptr, 10);
}

}    // namespace

// The parameters in the order in which they are compared; the first that matches wins. Only the first
// `compared` characters are looked at, so a longer word that begins with a keyword is that keyword.
// `set` receives what follows those characters.
struct ParameterTable {
    struct Row {
        const char* keyword;
        size_t compared;
        void (*set)(ParameterParser& parser, const char* rest);
    };

    template <bool StartOptions::*member, bool value> static void Switch(ParameterParser& parser, const char* /*rest*/)
    {
        parser.m_Options.*member = value;
    }
    template <uint32_t StartOptions::*member, uint32_t factor> static void Count(ParameterParser& parser, const char* rest)
    {
        parser.m_Options.*member = static_cast<uint32_t>(Number(rest)) * factor;
    }
    template <CascadeString StartOptions::*member> static void Text(ParameterParser& parser, const char* rest) { parser.m_Options.*member = rest; }
    template <unsigned index> static void VideoRes(ParameterParser& parser, const char* rest)
    {
        // Counted from 1 on the command line, from 0 by the engine.
        parser.m_Client.SetVideoRes(index, static_cast<int>(static_cast<unsigned>(Number(rest)) - 1U));
    }

    static constexpr Row kRows[] = {
        {"minfilesize=", 12, Count<&StartOptions::minFileSize, 1>},
        {"vtsthreshold=", 13, Count<&StartOptions::titleSetThreshold, 1>},
        {"browsedir=", 10, Text<&StartOptions::browseFolder>},
        {"browseroot=", 11, Text<&StartOptions::browseRoot>},
        {"noicons", 7, Switch<&StartOptions::showIcons, false>},
        {"fontsize=", 9, [](ParameterParser& parser, const char* rest) { parser.m_Options.fontSize = static_cast<int>(Number(rest)); }},
        {"infotimeout=", 12, Count<&StartOptions::infoTimeoutMs, 1000>},
        // On purpose these two are compared over seven characters only.
        {"largeicons", 7, [](ParameterParser& parser, const char*) { parser.m_Options.iconSize = kLargeIcons; }},
        {"hidesize", 7, Switch<&StartOptions::hideSize, true>},
        {"menuoneof", 9, Switch<&StartOptions::menuAtEnd, true>},
        {"exitatend", 9, Switch<&StartOptions::exitAtEnd, true>},
        {"nomenu", 6, Switch<&StartOptions::menuEnabled, false>},
        {"maxbuffer", 9, Switch<&StartOptions::maxBuffer, true>},
        {"nobrowserdelete", 15, Switch<&StartOptions::browserDelete, false>},
        {"noresume", 8, Switch<&StartOptions::resumeEnabled, false>},
        {"browserwithback", 15, Switch<&StartOptions::browserWithBack, true>},
        {"FixTS", 5, Switch<&StartOptions::tsFix, true>},
        {"NTSCRes=", 8, VideoRes<1>},
        {"PALRes=", 7, VideoRes<2>},
        {"unattended", 10, Switch<&StartOptions::unattended, true>},
        {"name=", 5, [](ParameterParser& parser, const char* rest) { parser.m_NextTitle = rest; }},
    };
};

void ParameterParser::Take(const char* argument)
{
    if (argument[0] != '-') {
        m_Client.AddFile(argument, m_NextTitle);
        m_NextTitle.Empty();
        return;
    }
    const char* const word = argument + 1;
    for (const ParameterTable::Row& row : ParameterTable::kRows) {
        if (strncasecmp(word, row.keyword, row.compared) == 0) {
            row.set(*this, word + row.compared);
            return;
        }
    }
    std::printf("Nuvid: unknown parameter %s\n", word);
}
