#include "Halvo/ThreadControl.h"

namespace Halvo {

constinit std::atomic<bool> ThreadControl::threadSafe_{false};

}  // namespace Halvo
