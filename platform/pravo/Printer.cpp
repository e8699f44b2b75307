#include "pravo.h"

namespace pravo {

Printer::~Printer() = default;

}  // namespace pravo
