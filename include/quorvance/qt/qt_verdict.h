#pragma once

#include "quorvance/check_point_base.h"
#include "quorvance/quorvance_manager.h"
#include "quorvance/verdict.h"

class QObject;

#pragma GCC visibility push(default)

namespace quorvance::qt {

/// Reports the checkpoint and asks for a verdict, as QuorvanceManager::getRiskForCheckPoint does,
/// save that the completion runs on the thread of `context`, from its event loop. Once the context
/// has been destroyed the completion is dropped; the checkpoint is reported all the same.
///
/// It runs once, and never inside this call. It does not run where the context's thread runs no
/// event loop, and after the loop's end; a context of another thread than the application's must be
/// destroyed before its thread ends, since Qt cannot hand anything to a thread just then. What the
/// completion holds may be destroyed on a thread of the library when it is dropped. A context that
/// is null counts as destroyed; an empty completion is none. Called on any thread on which the
/// context cannot be destroyed meanwhile, as a rule its own. Throws std::bad_alloc alone; then
/// nothing was reported.
void riskForCheckPoint(QuorvanceManager& manager, const CheckPointBase& checkPoint,
                       VerdictOptions options, QObject* context, VerdictCompletion completion);
/// The same without a deadline and a reason.
void riskForCheckPoint(QuorvanceManager& manager, const CheckPointBase& checkPoint,
                       QObject* context, RiskCompletion completion);

}  // namespace quorvance::qt

#pragma GCC visibility pop
