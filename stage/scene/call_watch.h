// A tool that is told about every call between the Stage and its plug-ins. Without one, a call costs one comparison
// more.
#pragma once

#include "stage/stage_export.h"

namespace stage {

struct RunningCall;

/// Null functions are not called. All but service_begins run on the thread that runs the Stage.
struct CallWatch {
    void (*entry_begins)(const RunningCall& call) = nullptr;  // before an entry point of an instance runs
    void (*entry_follows)() = nullptr;  // directly before its code, where the stack is as deep as for it
    void (*entry_ends)(const RunningCall& call) = nullptr;  // after it has returned
    /// A plug-in calls a service, on any thread. False: the Stage does not answer, out values stay as they are.
    bool (*service_begins)(const char* service) = nullptr;
    void (*service_ends)(const char* service) = nullptr;  // not after a refusal
};

/// Process-wide, as the services are. `watch` must stay where it is; null ends the watch.
STAGE_EXPORT void watch_calls(const CallWatch* watch);

STAGE_EXPORT extern const CallWatch* call_watch;  // read it only

/// A service call as the watch sees it.
class WatchedService {
  public:
    explicit WatchedService(const char* service)
        : service_(service),
          admitted_(!call_watch || !call_watch->service_begins || call_watch->service_begins(service)) {}
    ~WatchedService() {
        if (call_watch && call_watch->service_ends && admitted_) call_watch->service_ends(service_);
    }
    WatchedService(const WatchedService&) = delete;
    WatchedService& operator=(const WatchedService&) = delete;

    bool admitted() const { return admitted_; }

  private:
    const char* service_;
    bool admitted_;
};

}  // namespace stage
