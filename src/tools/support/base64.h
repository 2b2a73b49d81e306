#pragma once

#include <string>
#include <string_view>

namespace Hovar {

/// Bytes in Base64 with padding and without line ends (RFC 4648, section 4).
std::string Base64Of(std::string_view bytes);

}  // namespace Hovar
