// The job's static data requester as the session holds it: the library's pointer, owned by the job, and
// the detailed API log that every call through them writes to (null while the log is off).
#pragma once

#include <ostream>

#include "session/WellRequester.h"
#include "tNavigator_API_RMA.h"

namespace rivulet {

class StaticRequester {
  public:
    StaticRequester(tNavigator_API_RMA_static_data_requester_t* requester, std::ostream* log)
        : Requester(requester), Log(log) {}

    tNavigator_API_RMA_static_data_requester_t* Requester;
    std::ostream* Log;
};

}  // namespace rivulet
