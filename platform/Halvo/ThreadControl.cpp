#include "Halvo/ThreadControl.h"

namespace Halvo {

constinit bool ThreadControl::threadSafe_ = false;

}  // namespace Halvo
