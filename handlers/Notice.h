// Telling the viewer, in his language, that nothing on his machine opens what he chose: he pressed a
// button and nobody reads logs. The texts are those of the catalogue "portmeld-handlers".
#pragma once

#include "Subject.h"

namespace handlers {

/// Show one notification (Desktop Notifications standard), waiting for the server at most some
/// seconds. Without a server nothing is shown.
void tellThatNothingOpens(Kind kind);

}  // namespace handlers
