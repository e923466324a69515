#pragma once

namespace vanta {

/// What the product says of itself to hosts and in packages. Texts live as long as the module; they stand in
/// cmake/identity.cmake.
struct ProductIdentity {
    const char* name;
    const char* vendor;
    const char* version;
    const char* summary;
    const char* license;  ///< an SPDX expression
    const char* id;       ///< in reverse-domain form
    const char* uri;
};

const ProductIdentity& productIdentity();

}  // namespace vanta
