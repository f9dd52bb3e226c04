// Api.h - the collector's JSON interface, for scripts and people.
//
//   GET    /api/counts    of each channel: attempts, requests, records, replays, rejected
//   GET    /api/records   ?channel=&limit=&since=  accepted records, the newest first
//                         since: an "id", for records behind it; plain=1: with the whole request
//   GET    /api/rejected  ?limit=  refused requests with the reason, the newest first
//   POST   /api/reset     forgets them all
//   GET    /api/faults    what is still to be answered wrongly
//   POST   /api/faults    adds one, in the form of FaultPlan.h
//   DELETE /api/faults    clears them
#pragma once

#include "collector/HttpsServer.h"

namespace Drive::Collection {

class Collector;

HttpReply AnswerApi(Collector& collector, const HttpRequest& request);

}  // namespace Drive::Collection
