#pragma once

#include <string>
#include <vector>

namespace vanta::interface {

/// What an interface says of its product, and where it leads.
struct InterfaceProduct {
    std::string name;
    std::string vendor;
    std::string version;
    std::string webSite;
    std::string support;
    std::string help;  ///< a file, or an address where none was installed
    /// Of the rows of the model's fixed sizes.
    std::vector<std::string> sizeNames;
};

/// By what cmake/identity.cmake says. `helpFile` is the installed manual, or empty.
InterfaceProduct interfaceProduct(const std::string& helpFile, std::vector<std::string> sizeNames);

/// What a new user reads first.
std::string welcomeText(const InterfaceProduct& product);

}  // namespace vanta::interface
