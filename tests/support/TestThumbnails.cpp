// Thumbnails that come when the test answers them.
#include <algorithm>

#include "platform/CascadeThumbnail.h"
#include "tests/support/TestPlatform.h"

namespace {

struct Waiting {
    CascadeThumbnails::Client* client;
    std::string path;
};
std::vector<Waiting> g_Waiting;

}    // namespace

CascadeThumbnails::Client::~Client()
{
    Cancel(*this);
}

void CascadeThumbnails::Request(const char* path, Client& client)
{
    Cancel(client);
    g_Waiting.push_back({&client, path});
}

void CascadeThumbnails::Cancel(Client& client)
{
    std::erase_if(g_Waiting, [&client](const Waiting& waiting) { return waiting.client == &client; });
}

bool TestPlatform::AnswerThumbnail(const std::string& path, const std::string& pictureFile, int seconds)
{
    const auto found = std::find_if(g_Waiting.begin(), g_Waiting.end(), [&path](const Waiting& waiting) { return waiting.path == path; });
    if (found == g_Waiting.end()) {
        return false;
    }
    CascadeThumbnails::Client* const client = found->client;
    g_Waiting.erase(found);
    client->OnThumbnail(path.c_str(), pictureFile.c_str(), seconds);
    return true;
}
