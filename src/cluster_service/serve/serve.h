#pragma once

#include <functional>
#include <memory>
#include <ostream>

#include "cluster_engine/host.h"
#include "command/cluster_place.h"
#include "reference_host/store.h"
#include "serve/service_settings.h"

/// Runs the cluster that the store has, for whoever asks over HTTP, until a signal asks it to end.
/// Holds the cluster meanwhile: it does not start while another service has it. When the hold is
/// lost it takes no input, and begins anew, in the same process, once the store can be asked again;
/// when another has the cluster by then, it ends.
///
/// Says on the output what it starts, a line a step, and on the errors what stands in its way.
/// onStarted is told once whether it has begun to run the cluster, or what stands in its way is
/// still to be mended.
///
/// Returns an exit code. Within five seconds of the signal, or at once after a second one, the
/// process is gone: by _exit where something does not come to its end, as a plug-in's call or a
/// store that does not answer.
int Serve(const CServiceSettings& settings, const CClusterPlace& place,
          std::shared_ptr<IStore> pStore, IStepClock& clock,
          const std::function<void(bool bRuns)>& onStarted, std::ostream& output,
          std::ostream& errors);
