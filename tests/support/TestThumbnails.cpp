// Thumbnails that never come.
#include "platform/CascadeThumbnail.h"

CascadeThumbnails::Client::~Client() = default;

void CascadeThumbnails::Request(const char* /*path*/, Client& /*client*/) { }

void CascadeThumbnails::Cancel(Client& /*client*/) { }
