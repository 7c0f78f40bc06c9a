// Names of the languages that the two-letter codes of a DVD mean.
//
// Threads: constant data.
#pragma once

#include <iterator>
#include <string_view>

struct LanguageRow {
    std::string_view code;    // ISO 639-1, with the deviations noted at their rows
    const char* name;    // UTF-8, as shown
};

// Searched from the top, the first equal code counts. The main European languages carry their own names.
inline constexpr LanguageRow kLanguages[] = {
    {"aa", "Afar"},
    {"ab", "Abkhazian"},
    {"af", "Afrikaans"},
    {"sq", "Albanian"},
    {"am", "Amharic (Ameharic)"},
    {"ar", "Arabic"},
    {"ia", "Armenian"},    // on purpose: not the standard's Interlingua
    {"as", "Assamese"},
    {"ay", "Aymara"},
    {"az", "Azerbaijani"},
    {"ba", "Bashkir"},
    {"eu", "Basque"},
    {"dz", "Bhutani"},
    {"bh", "Bihari"},
    {"bi", "Bislama"},
    {"bn", "Bengali;Bangla"},
    {"br", "Breton"},
    {"bg", "Bulgarian"},
    {"my", "Burmese"},
    {"be", "Byelorussian"},
    {"km", "Cambodian"},
    {"ca", "Català (Catalan)"},
    {"zh", "Chinese"},
    {"co", "Corsican"},
    {"cs", "Czech(Ceske)"},
    {"da", "Dansk (Danish)"},
    {"de", "Deutsch"},
    {"en", "English"},
    {"eo", "Esperanto"},
    {"es", "Español"},
    {"et", "Estonian"},
    {"fi", "Finnish"},
    {"fj", "Fiji"},
    {"fo", "Faroese"},
    {"fr", "Français"},
    {"fy", "Frisian"},
    {"gl", "Galician"},
    {"ka", "Georgian"},
    {"el", "Greek"},
    {"kl", "Greenlandic"},
    {"gn", "Guarani"},
    {"gu", "Gujarati"},
    {"ha", "Hausa"},
    {"he", "Hebrew"},
    {"iw", "Hebrew"},    // the older code of "he"
    {"hi", "Hindi"},
    {"hr", "Hrvatski (Croatian)"},
    {"id", "Indonesian"},
    {"in", "Indonesian"},    // the older code of "id"
    {"ie", "Interlingue"},
    {"ik", "Inupiak"},
    {"ga", "Irish"},
    {"is", "Islenska (Icelandic)"},
    {"it", "Italiano (Italian)"},
    {"iu", "Inuktitut"},
    {"ja", "Japanese"},
    {"jw", "Javanese"},
    {"kn", "Kannada"},
    {"ks", "Kashmiri"},
    {"kk", "Kazakh"},
    {"ko", "Korean"},
    {"ku", "Kurdish"},
    {"rw", "Kinyarwanda"},
    {"ky", "Kirghiz"},
    {"rn", "Kirundi"},
    {"la", "Latin"},
    {"ln", "Lingala"},
    {"lo", "Laothian"},
    {"lt", "Lithuanian"},
    {"lv", "Latvian, Lettish"},
    {"mk", "Macedonian"},
    {"hu", "Magyar"},
    {"mg", "Malagasy"},
    {"ms", "Malay"},
    {"ml", "Malayalam"},
    {"mt", "Maltese"},
    {"mi", "Maori"},
    {"mr", "Marathi"},
    {"mo", "Moldavian"},
    {"mn", "Mongolian"},
    {"na", "Nauru"},
    {"nl", "Nederlands"},
    {"ne", "Nepali"},
    {"no", "Norsk"},
    {"oc", "Occitan"},
    {"or", "Oriya"},
    {"om", "Oromo"},
    {"ps", "Pashto, Pushto"},
    {"fa", "Persian"},
    {"pl", "Polish"},
    {"pt", "Portugues"},
    {"pa", "Punjabi"},
    {"qu", "Quechua"},
    {"rm", "Rhaeto-Romance"},
    {"ro", "Romanian"},
    {"ru", "Russian"},
    {"sg", "Sangho"},
    {"sm", "Samoan"},
    {"sa", "Sanskrit"},
    {"gd", "Scots Gaelic"},
    {"sr", "Serbian"},
    {"sh", "Serbo-Croatian"},
    {"st", "Sesotho"},
    {"tn", "Setswana"},
    {"sn", "Shona"},
    {"si", "Singhalese"},
    {"sd", "Sindhi"},
    {"ss", "Siswati"},
    {"sk", "Slovak"},
    {"sl", "Slovenian"},
    {"so", "Somali"},
    {"su", "Sundanese"},
    {"sv", "Svenska"},
    {"sw", "Swahili"},
    {"tl", "Tagalog"},
    {"tg", "Tajik"},
    {"ta", "Tamil"},
    {"tt", "Tatar"},
    {"te", "Telugu"},
    {"th", "Thai"},
    {"bo", "Tibetan"},
    {"ti", "Tigrinya"},
    {"to", "Tonga"},
    {"ts", "Tsonga"},
    {"tr", "Turkish"},
    {"tk", "Turkmen"},
    {"tw", "Twi"},
    {"ug", "Uighur"},
    {"uk", "Ukrainian"},
    {"ur", "Urdu"},
    {"uz", "Uzbek"},
    {"ui", "Vietnamese"},    // on purpose: not the standard's "vi"
    {"vo", "Volapuk"},
    {"cy", "Welsh"},
    {"wo", "Wolof"},
    {"xh", "Xhosa"},
    {"ji", "Yiddish"},    // the older code of "yi"
    {"yi", "Yiddish"},
    {"yo", "Yoruba"},
    {"za", "Zhuang"},
    {"zu", "Zulu"},
};
static_assert(std::size(kLanguages) == 141);

// The name, or null when no row has this code. Case counts.
constexpr const char* LanguageName(std::string_view code)
{
    for (const LanguageRow& row : kLanguages) {
        if (row.code == code) {
            return row.name;
        }
    }
    return nullptr;
}
