#include "snapshot/Source.h"

namespace tcamshow {

Source::~Source() = default;

}  // namespace tcamshow
