// Api.h - the collector's JSON interface, for scripts and people.
//
//   GET    /api/counts                          attempts, requests, records, replays, rejected of each
//   channel GET    /api/records?channel=&limit=&since=  accepted records, the newest first; `since` is the
//   "id" of a
//                                               record, and `plain=1` adds the whole request
//   GET    /api/rejected?limit=                 refused requests with the reason, the newest first
//   POST   /api/reset                           forgets them all
//   GET    /api/faults                          what is still to be answered wrongly
//   POST   /api/faults                          adds one, in the form of FaultPlan.h
//   DELETE /api/faults                          clears them
#pragma once

#include "collector/HttpsServer.h"

namespace Drive::Collection {

class Collector;

HttpReply AnswerApi(Collector& collector, const HttpRequest& request);

}  // namespace Drive::Collection
