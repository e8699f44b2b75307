#include "io/InputError.h"

#include <system_error>
#include <utility>

#include "io/Complaints.h"
#include "io/SafeText.h"

namespace tcamshow {

InputError::InputError(std::string file, std::uint64_t line, std::string_view message)
    : std::runtime_error(placeText(file, line) + safeText(message)),
      file_(std::move(file)),
      line_(line),
      message_(safeText(message)) {}
InputError::~InputError() = default;

OutputError::OutputError(int errorNumber)
    : std::runtime_error("cannot write the output: " +
                         std::generic_category().message(errorNumber)) {}
OutputError::~OutputError() = default;

ClosedPipe::ClosedPipe() : std::runtime_error("the output is closed") {}
ClosedPipe::~ClosedPipe() = default;

}  // namespace tcamshow
