// The stand-in head office's web pages, so that a trial shows what a head office would see: GET /
// lists the posts stored in its folder (time, session, client, status, rows) with each document
// rendered as the head office's client shows it; GET /posts/NNNN shows one post's whole document.
// The pages read only what the head office stored (posts.txt, NNNN.json, NNNN.xml); every text in
// them came from a client and is escaped, and the pages are served with a policy that allows no
// scripts.
#pragma once

#include <httplib.h>

#include <string>

namespace ent {

// Registers the pages on `server`. With an empty `out_dir` the pages say that posts are not kept.
void AddHeadOfficePages(httplib::Server& server, const std::string& out_dir);

}  // namespace ent
