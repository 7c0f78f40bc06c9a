// What servers write, read: addresses, device descriptions, SOAP answers, DIDL-Lite.
#include <gtest/gtest.h>

#include "host/upnp/control/AddressRule.h"
#include "host/upnp/control/BrowseMessage.h"
#include "host/upnp/control/BrowseReader.h"
#include "host/upnp/control/DeviceDescription.h"
#include "host/upnp/control/DidlObjects.h"

using namespace host;

namespace {

const AddressRule kHome("192.168.1.20", 24);

std::string Didl(const std::string& inside)
{
    return "<DIDL-Lite xmlns:dc=\"d\" xmlns:upnp=\"u\" xmlns=\"x\">" + inside + "</DIDL-Lite>";
}

std::string Item(const std::string& title, const std::string& protocol, const std::string& url, const std::string& attributes = {})
{
    return "<item id=\"1\" parentID=\"0\"><res protocolInfo=\"" + protocol + "\" " + attributes + ">" + url + "</res><dc:title>" + title + "</dc:title></item>";
}

DidlObjects ReadDidl(const std::string& document, size_t most = 1000)
{
    DidlReader reader(kHome, most);
    reader.Take(document);
    return reader.Finish();
}

DidlObjects Read(const std::string& inside)
{
    return ReadDidl(Didl(inside));
}

struct Answer {
    BrowseEnvelope envelope;
    DidlObjects didl;
};

// Given in pieces of `piece` bytes.
Answer ReadAnswer(std::string_view text, size_t piece = std::string::npos)
{
    BrowseReader reader(kHome, 100000);
    for (size_t at = 0; at < text.size(); at += std::min(piece, text.size())) {
        reader.Take(text.substr(at, piece));
    }
    const BrowseEnvelope envelope = reader.FinishEnvelope();
    return {envelope, reader.FinishObjects()};
}

}    // namespace

TEST(AddressRule, AllowsPrivateAddressesOfTheNetworkAlone)
{
    for (const char* url : {"http://192.168.1.5/a", "http://192.168.1.5:8200/desc.xml?x=1", "http://192.168.1.255", "http://192.168.1.5:1/"}) {
        EXPECT_TRUE(kHome.AllowsUrl(url)) << url;
    }
    for (const char* url : {"http://192.168.2.5/", "http://10.0.0.1/", "http://8.8.8.8/", "http://127.0.0.1/", "http://localhost/", "http://nas.example/",
             // Each is one host to one reader and another to the next.
             "http://192.168.1.5@8.8.8.8/", "http://8.8.8.8\\@192.168.1.5/", "http://192.168.1.5.example/", "http://192.168.261/", "http://0300.0250.1.5/", "http://3232235781/",
             "http://[::ffff:192.168.1.5]/", "http:///192.168.1.5/", "http://192.168.1.5:0/", "http://192.168.1.5:99999/", "http://192.168.1.5:80:90/", "http://192.168.1.5:/",
             "http://192.168.1.5/a b", "http://192.168.1.5/a\r\nX: y", "https://192.168.1.5/", "rtsp://192.168.1.5/", "file:///etc/passwd", "/relative", ""}) {
        EXPECT_FALSE(kHome.AllowsUrl(url)) << url;
    }
}

TEST(AddressRule, KnowsThePrivateRangesAndKeepsLoopbackToItself)
{
    EXPECT_TRUE(AddressRule("10.1.2.3", 8).AllowsUrl("http://10.200.0.1/"));
    EXPECT_TRUE(AddressRule("172.31.0.1", 16).AllowsUrl("http://172.31.255.1/"));
    EXPECT_TRUE(AddressRule("169.254.7.7", 16).AllowsUrl("http://169.254.1.1/"));
    EXPECT_TRUE(AddressRule("127.0.0.1", 8).AllowsUrl("http://127.0.0.1:8200/"));
    // A public network, and one that claims to be everything.
    EXPECT_FALSE(AddressRule("198.51.100.1", 24).AllowsUrl("http://198.51.100.2/"));
    EXPECT_FALSE(AddressRule("172.32.0.1", 16).AllowsUrl("http://172.32.0.2/"));
    EXPECT_FALSE(AddressRule("0.0.0.0", 1).AllowsUrl("http://127.0.0.1/"));
    EXPECT_FALSE(AddressRule("192.168.1.1", 0).AllowsUrl("http://192.168.1.2/"));
    EXPECT_FALSE(AddressRule("fe80::1", 24).AllowsUrl("http://192.168.1.2/"));
    EXPECT_FALSE(AddressRule().AllowsUrl("http://192.168.1.2/"));
}

TEST(Didl, ReadsContainersAndItemsInTheServersOrder)
{
    const DidlObjects read = Read("<container id=\"64$0\" parentID=\"64\" childCount=\"3\"><dc:title>Filme &amp; mehr</dc:title><upnp:class>object.container</upnp:class></container>"
                                  "<item id=\"i1\" parentID=\"64\"><dc:title> Zwei\nZeilen </dc:title><upnp:class>object.item.videoItem</upnp:class>"
                                  "<desc id=\"x\" nameSpace=\"y\"><title>nested</title><item id=\"no\"/></desc>"
                                  "<res protocolInfo=\"http-get:*:video/mpeg:*\" size=\"4294967296\" duration=\"1:02:03.5\">http://192.168.1.5/a.mpg</res>"
                                  "<res protocolInfo=\"http-get:*:VIDEO/MPEG:*\" size=\"-1\">http://192.168.1.5/b.mpg?x=1&amp;y=2</res></item>");
    ASSERT_TRUE(read.whole);
    ASSERT_EQ(read.objects.size(), 2u);
    EXPECT_FALSE(read.objects[0]->isItem);
    EXPECT_EQ(read.objects[0]->id, "64$0");
    EXPECT_EQ(read.objects[0]->title, "Filme & mehr");
    const CascadeUPnP::AVObject& item = *read.objects[1];
    EXPECT_TRUE(item.isItem);
    EXPECT_EQ(item.title, "Zwei Zeilen");
    EXPECT_EQ(item.upnpClass, "object.item.videoItem");
    ASSERT_EQ(item.resources.GetSize(), 2u);
    EXPECT_EQ(item.resources[0].url, "http://192.168.1.5/a.mpg");
    EXPECT_EQ(item.resources[0].size, 4294967296u);
    EXPECT_EQ(item.resources[0].duration, "1:02:03.5");
    EXPECT_EQ(item.resources[1].url, "http://192.168.1.5/b.mpg?x=1&y=2");
    EXPECT_EQ(item.resources[1].size, 0u);
}

TEST(Didl, TakesUrlsOfTheServersNetworkAlone)
{
    const DidlObjects read = Read(Item("a", "http-get:*:video/mpeg:*", "http://8.8.8.8/a.mpg") + Item("b", "rtsp-rtp-udp:*:video/mpeg:*", "rtsp://192.168.1.5/b"));
    ASSERT_EQ(read.objects.size(), 2u);
    for (const auto& object : read.objects) {
        ASSERT_EQ(object->resources.GetSize(), 1u);
        EXPECT_TRUE(object->resources[0].url.IsEmpty());
    }
}

TEST(Didl, NamesMpegStreamsByOneType)
{
    const auto type = [](const std::string& title, const std::string& protocol, const std::string& path) {
        const DidlObjects read = Read(Item(title, protocol, "http://192.168.1.5/" + path));
        return read.objects.at(0)->resources[0].protocolInfo.Str();
    };
    EXPECT_EQ(type("Show.TS", "http-get:*:application/octet-stream:*", "12"), "http-get:*:video/mpeg:*");
    EXPECT_EQ(type("Show", "http-get:*:application/octet-stream:DLNA.ORG_OP=01", "a.m2ts?id=.txt"), "http-get:*:video/mpeg:DLNA.ORG_OP=01");
    EXPECT_EQ(type("Show", "http-get:*:video/MP2T", "12"), "http-get:*:video/mpeg");
    EXPECT_EQ(type("Show.iso", "http-get:*:application/octet-stream:*", "12"), "http-get:*:application/octet-stream:*");
    EXPECT_EQ(type("Show.ts", "http-get:*:video/mp4:*", "a.ts"), "http-get:*:video/mp4:*");
    EXPECT_EQ(type("Show.ts", "nonsense", "a.ts"), "nonsense");
}

TEST(Didl, KeepsWhatCameBeforeTheFault)
{
    const std::string good = "<container id=\"1\"><dc:title>one</dc:title></container>";
    for (const std::string& fault : {std::string("<container id=\"2\"><dc:title>two</container>"), std::string("<container id="), std::string("<a>&nbsp"),
             // Deeper than any list of media is.
             [] {
                 std::string deep;
                 for (int depth = 0; depth < 100000; ++depth) {
                     deep += "<a>";
                 }
                 return deep;
             }()}) {
        const DidlObjects read = ReadDidl("<DIDL-Lite xmlns:dc=\"d\">" + good + fault);
        EXPECT_FALSE(read.whole) << fault.substr(0, 40);
        ASSERT_EQ(read.objects.size(), 1u);
        EXPECT_EQ(read.objects[0]->title, "one");
    }
    // Document types are not read at all, whatever they would declare.
    const DidlObjects typed = ReadDidl("<?xml version=\"1.0\"?><!DOCTYPE d [<!ENTITY e SYSTEM \"file:///etc/passwd\">]>" + Didl("<container id=\"1\"><dc:title>&e;</dc:title></container>"));
    EXPECT_FALSE(typed.whole);
    EXPECT_TRUE(typed.objects.empty());
}

TEST(Didl, MendsWhatServersOftenGetWrong)
{
    const DidlObjects read = Read("<container id=\"1\"><dc:title>Tom & Jerry \xE9t\xE9 &#x41;&e;</dc:title></container><container id=\"2\"/><container><dc:title>nameless</dc:title></container>");
    ASSERT_TRUE(read.whole);
    EXPECT_EQ(read.count, 3u);
    ASSERT_EQ(read.objects.size(), 2u);
    EXPECT_EQ(read.objects[0]->title, "Tom & Jerry \xEF\xBF\xBDt\xEF\xBF\xBD A&e;");
    EXPECT_EQ(read.objects[1]->title, "2");
    // Characters that XML does not allow, as they stand in the titles of broadcasts, and prefixes that nobody explained.
    const DidlObjects odd = Read("<x:container id=\"1\" y:parentID=\"0\"><dc:title>\x05News\x1B &#5;at&#xFFFF; 8 \xEF\xBF\xBF&#0;</dc:title></x:container><container id=\"2\"/>");
    EXPECT_TRUE(odd.whole);
    ASSERT_EQ(odd.objects.size(), 2u);
    EXPECT_EQ(odd.objects[0]->title, "News   at  8 \xEF\xBF\xBD&#0;");
    EXPECT_EQ(odd.objects[0]->parentId, "0");
    // What a document says of its encoding held before it was put into the answer.
    for (const char* begin : {"<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>", "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"UTF-16\"?>", "\xEF\xBB\xBF", " \r\n<?xml version=\"1.0\"?>\n"}) {
        const DidlObjects marked = ReadDidl(begin + Didl("<container id=\"1\"><dc:title>\xC3\xA4</dc:title></container>"));
        ASSERT_EQ(marked.objects.size(), 1u) << begin;
        EXPECT_EQ(marked.objects[0]->title, "\xC3\xA4");
        EXPECT_TRUE(marked.whole);
    }
}

TEST(Didl, BoundsEverything)
{
    std::string many;
    for (int i = 0; i < 50; ++i) {
        many += "<container id=\"" + std::to_string(i) + "\"/>";
    }
    const DidlObjects cut = ReadDidl(Didl(many), 20);
    EXPECT_TRUE(cut.whole);
    EXPECT_EQ(cut.objects.size(), 20u);

    std::string title;
    for (int i = 0; i < 1000; ++i) {
        title += "\xC3\xA4";
    }
    std::string resources;
    for (int i = 0; i < 200; ++i) {
        resources += "<res protocolInfo=\"http-get:*:video/mpeg:*\">http://192.168.1.5/" + std::to_string(i) + "</res>";
    }
    const std::string endless(20000, 'x');
    const DidlObjects read = Read("<item id=\"1\"><dc:title>" + title + "\xC3\xA4</dc:title>" + resources + "</item>" + Item("long", "http-get:*:video/mpeg:*", "http://192.168.1.5/" + endless)
                                  + "<item id=\"" + endless + "\"><dc:title>nobody can ask for this</dc:title></item>");
    ASSERT_EQ(read.objects.size(), 2u);
    EXPECT_EQ(read.objects[0]->title.GetLength(), kLongestTitle);
    EXPECT_EQ(read.objects[0]->resources.GetSize(), kMostResources);
    EXPECT_TRUE(read.objects[1]->resources[0].url.IsEmpty());
}

TEST(DeviceDescription, FindsTheServerAlsoInsideAnother)
{
    const std::string service = "<serviceList><service><serviceType>urn:schemas-upnp-org:service:ConnectionManager:1</serviceType><controlURL>/cm</controlURL></service>"
                                "<service><serviceType>urn:schemas-upnp-org:service:ContentDirectory:2</serviceType><controlURL>ctl/dir</controlURL></service></serviceList>";
    const std::string inner = "<device><friendlyName>Inner</friendlyName><UDN>uuid:in</UDN>" + service + "</device>";
    const std::string whole = "<root xmlns=\"urn:schemas-upnp-org:device-1-0\"><device><friendlyName>Outer</friendlyName><UDN>uuid:out</UDN><deviceList>" + inner + "</deviceList></device></root>";
    const auto found = ReadDeviceDescription(whole, "in", "http://192.168.1.5:80/a/desc.xml");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->name, "Inner");
    EXPECT_EQ(found->serviceType, "urn:schemas-upnp-org:service:ContentDirectory:2");
    EXPECT_EQ(found->controlUrl, "http://192.168.1.5:80/a/ctl/dir");
    // Not the one that was announced, without a content directory, or no XML: no server.
    EXPECT_FALSE(ReadDeviceDescription(whole, "out", "http://192.168.1.5/"));
    EXPECT_FALSE(ReadDeviceDescription(whole, "", "http://192.168.1.5/"));
    EXPECT_FALSE(ReadDeviceDescription(whole.substr(0, 200), "in", "http://192.168.1.5/"));
    EXPECT_FALSE(ReadDeviceDescription("<!DOCTYPE x>" + whole, "in", "http://192.168.1.5/"));
    // A base of its own counts; whether it is trusted is AddressRule's to say.
    const auto elsewhere = ReadDeviceDescription("<root><URLBase>http://8.8.8.8/</URLBase>" + inner + "</root>", "in", "http://192.168.1.5/");
    ASSERT_TRUE(elsewhere);
    EXPECT_FALSE(kHome.AllowsUrl(elsewhere->controlUrl));
}

TEST(BrowseMessage, AsksAndReadsTheAnswer)
{
    const std::string body = BrowseBody({"urn:x:1", "a<b>&\"", "*", "+dc:title", 7, 9});
    EXPECT_NE(body.find("<ObjectID>a&lt;b&gt;&amp;&quot;</ObjectID>"), std::string::npos);
    EXPECT_NE(body.find("<StartingIndex>7</StartingIndex><RequestedCount>9</RequestedCount><SortCriteria>+dc:title</SortCriteria>"), std::string::npos);

    const Answer answer = ReadAnswer("<s:Envelope xmlns:s=\"e\"><s:Body><u:BrowseResponse xmlns:u=\"b\"><Result>&lt;DIDL-Lite/&gt;</Result><NumberReturned> 3 </NumberReturned>"
                                     "<TotalMatches>99999999999999999999</TotalMatches></u:BrowseResponse></s:Body></s:Envelope>");
    EXPECT_TRUE(answer.envelope.read);
    EXPECT_TRUE(answer.didl.whole);
    EXPECT_EQ(answer.envelope.numberReturned, 3u);
    EXPECT_EQ(answer.envelope.totalMatches, 0u);
    EXPECT_EQ(ReadAnswer("<s:Envelope><s:Body><s:Fault><detail><UPnPError><errorCode>709</errorCode></UPnPError></detail></s:Fault></s:Body></s:Envelope>").envelope.errorCode, kUnsupportedSort);
    EXPECT_FALSE(ReadAnswer("<html>busy</html>").envelope.read);
    EXPECT_FALSE(ReadAnswer("").envelope.read);
}

// However it is written, and wherever the network breaks it.
TEST(BrowseReader, ReadsTheSameInPieces)
{
    const std::string object = "<container id=\"1\"><dc:title>T\xC3\xB6m & J\xE4rry &#x20AC;\x05&#5; \xF0\x9F\x8E\xAC</dc:title></container>";
    std::string escaped;
    for (const char c : Didl(object + object)) {
        escaped += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&#38;" : c == '"' ? "&quot;" : std::string(1, c);
    }
    const std::string after = "<NumberReturned>2</NumberReturned><TotalMatches>2</TotalMatches></B></E>";
    for (const std::string& result : {"<Result>" + escaped + "</Result>", "<u:Result xmlns:u=\"u\" x=\"y\" >" + escaped + "</u:Result>", "<Result><![CDATA[" + Didl(object) + "]]></Result>",
             "<!-- Result --><Result>" + escaped.substr(0, 30) + "<!-- -->" + escaped.substr(30) + "</Result>"}) {
        const std::string text = "<E><B>" + result + after;
        for (size_t piece = 1; piece < text.size(); piece += piece < 20 ? 1 : 37) {
            const Answer answer = ReadAnswer(text, piece);
            ASSERT_TRUE(answer.envelope.read && answer.didl.whole) << piece << " " << result;
            EXPECT_EQ(answer.envelope.numberReturned, 2u);
            ASSERT_FALSE(answer.didl.objects.empty());
            EXPECT_EQ(answer.didl.objects.back()->title, "T\xC3\xB6m & J\xEF\xBF\xBDrry \xE2\x82\xAC   \xF0\x9F\x8E\xAC") << piece << " " << result;
        }
    }
}

// A large document has a thread of its own, which may be abandoned.
TEST(BrowseReader, ReadsMuchMeanwhile)
{
    std::string text = "<E><Result>&lt;DIDL-Lite&gt;";
    for (int i = 0; i < 5000; ++i) {
        text += "&lt;container id=\"" + std::to_string(i) + "\"&gt;&lt;title&gt;A title of some length&lt;/title&gt;&lt;/container&gt;";
    }
    const Answer answer = ReadAnswer(text + "&lt;/DIDL-Lite&gt;</Result></E>", 50000);
    EXPECT_TRUE(answer.envelope.read && answer.didl.whole);
    ASSERT_EQ(answer.didl.objects.size(), 5000u);
    EXPECT_EQ(answer.didl.objects[4999]->id, "4999");
    BrowseReader abandoned(kHome, 100000);
    abandoned.Take(text);
}

// Every attribute of an element is compared with every other.
TEST(XmlReader, BoundsAnElement)
{
    std::string many = "<a";
    for (int i = 0; i < 200000; ++i) {
        many += " a" + std::to_string(i) + "=''";
    }
    EXPECT_FALSE(ReadDidl(many + "/>").whole);
    EXPECT_FALSE(ReadAnswer("<E><Result>&lt;DIDL-Lite " + many.substr(2) + "&gt;</Result></E>", 60000).didl.whole);
}
