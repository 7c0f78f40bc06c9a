#include "host/upnp/control/XmlWalk.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include <glib.h>

namespace host {
namespace {

constexpr size_t kMostAttributes = 64;

struct Walk {
    XmlVisitor& visitor;
    int depth = 0;
    bool enough = false;
    XmlVisitor::Attributes attributes;
};

void Stop(GError** error)
{
    g_set_error_literal(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, "beyond a limit");
}

std::string_view Local(const char* name)
{
    const std::string_view whole(name);
    const size_t colon = whole.rfind(':');
    return colon == std::string_view::npos ? whole : whole.substr(colon + 1);
}

void OnBegin(GMarkupParseContext*, const char* name, const char** names, const char** values, gpointer self, GError** error)
{
    Walk& walk = *static_cast<Walk*>(self);
    if (++walk.depth > kDeepestXml) {
        Stop(error);
        return;
    }
    walk.attributes.clear();
    for (size_t at = 0; names[at] != nullptr && at < kMostAttributes; ++at) {
        walk.attributes.emplace_back(Local(names[at]), values[at]);
    }
    walk.visitor.OnBegin(Local(name), walk.depth, walk.attributes);
}

void OnEnd(GMarkupParseContext*, const char* name, gpointer self, GError** error)
{
    Walk& walk = *static_cast<Walk*>(self);
    if (!walk.visitor.OnEnd(Local(name), walk.depth--)) {
        walk.enough = true;
        Stop(error);
    }
}

void OnText(GMarkupParseContext*, const char* text, gsize length, gpointer self, GError**)
{
    static_cast<Walk*>(self)->visitor.OnText({text, length});
}

void OnPassthrough(GMarkupParseContext*, const char* text, gsize length, gpointer, GError** error)
{
    constexpr std::string_view kType = "<!DOCTYPE";
    if (std::string_view(text, length).substr(0, kType.size()) == kType) {
        Stop(error);
    }
}

constexpr GMarkupParser kParser {OnBegin, OnEnd, OnText, OnPassthrough, nullptr};

struct FreeContext {
    void operator()(GMarkupParseContext* context) const { g_markup_parse_context_free(context); }
};

// Whether "&" at the begin of `rest` begins a reference that XML knows (XML 1.0 4.1, 4.6).
bool IsReference(std::string_view rest)
{
    constexpr size_t kLongest = 12;
    const size_t end = rest.substr(0, kLongest).find(';');
    if (end == std::string_view::npos) {
        return false;
    }
    const std::string_view name = rest.substr(1, end - 1);
    return name == "amp" || name == "lt" || name == "gt" || name == "quot" || name == "apos" || name.substr(0, 1) == "#";
}

// A lone "&" becomes "&amp;". Empty: there is none.
std::string MendAmpersands(std::string_view document)
{
    std::string mended;
    size_t taken = 0;
    for (size_t at = document.find('&'); at != std::string_view::npos; at = document.find('&', at + 1)) {
        if (!IsReference(document.substr(at))) {
            mended.append(document.substr(taken, at + 1 - taken)).append("amp;");
            taken = at + 1;
        }
    }
    if (taken != 0) {
        mended.append(document.substr(taken));
    }
    return mended;
}

}    // namespace

bool WalkXml(std::string_view document, XmlVisitor& visitor)
{
    // A byte order mark is no markup.
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    if (document.substr(0, kMark.size()) == kMark) {
        document.remove_prefix(kMark.size());
    }
    std::string valid;
    if (!g_utf8_validate_len(document.data(), document.size(), nullptr)) {
        const std::unique_ptr<char, decltype(&g_free)> made(g_utf8_make_valid(document.data(), static_cast<gssize>(document.size())), g_free);
        valid = made.get();
        document = valid;
    }
    const std::string mended = MendAmpersands(document);
    document = mended.empty() ? document : std::string_view(mended);

    Walk walk {visitor, 0, false, {}};
    const std::unique_ptr<GMarkupParseContext, FreeContext> context(g_markup_parse_context_new(&kParser, G_MARKUP_TREAT_CDATA_AS_TEXT, &walk, nullptr));
    const bool parsed = g_markup_parse_context_parse(context.get(), document.data(), static_cast<gssize>(document.size()), nullptr) != FALSE &&
                        g_markup_parse_context_end_parse(context.get(), nullptr) != FALSE;
    return parsed || walk.enough;
}

std::string TidyText(std::string_view text, size_t most)
{
    if (text.size() > most) {
        while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80) {
            --most;
        }
        text = text.substr(0, most);
    }
    const auto isBlank = [](unsigned char c) { return c <= ' ' || c == 0x7F; };
    const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto last = std::find_if_not(text.rbegin(), std::make_reverse_iterator(first), isBlank).base();
    std::string tidy(first, last);
    std::replace_if(tidy.begin(), tidy.end(), isBlank, ' ');
    return tidy;
}

}    // namespace host
