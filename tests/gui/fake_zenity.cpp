#include "tests/gui/fake_zenity.hpp"

#include <signal.h>
#include <stdlib.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

namespace vanta::test {
namespace {

namespace fs = std::filesystem;

/// "answer" comes into being when all that belongs to it is there.
constexpr char kScript[] = R"(#!/bin/sh
cd "{}" || exit 99
echo $$ > process
printf '%s\n' "$@" > asked
mv asked arguments
while [ ! -e answer ]; do sleep 0.01; done
mv answer given
cat output
exit $(cat given)
)";

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

FakeZenity::FakeZenity() : path_(getenv("PATH")) {
    std::string name = (fs::temp_directory_path() / "vanta-zenity-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no temporary folder");
    folder_ = name;
    std::ofstream(folder_ / "zenity") << fmt::format(kScript, name);
    fs::permissions(folder_ / "zenity", fs::perms::owner_all);
    setenv("PATH", fmt::format("{}:{}", name, path_).c_str(), 1);
    if (const char* bus = getenv("DBUS_SESSION_BUS_ADDRESS")) bus_ = bus;
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/at/all", 1);
}

FakeZenity::~FakeZenity() {
    setenv("PATH", path_.c_str(), 1);
    if (bus_) {
        setenv("DBUS_SESSION_BUS_ADDRESS", bus_->c_str(), 1);
    } else {
        unsetenv("DBUS_SESSION_BUS_ADDRESS");
    }
    std::error_code error;
    fs::remove_all(folder_, error);
}

void FakeZenity::answer(int status, const std::string& output) const {
    std::ofstream(folder_ / "output", std::ios::binary) << output;
    std::ofstream(folder_ / "status") << status;
    fs::rename(folder_ / "status", folder_ / "answer");
}

void FakeZenity::hide() const {
    setenv("PATH", "/nowhere/at/all", 1);
}

std::vector<std::string> FakeZenity::arguments() const {
    std::vector<std::string> all;
    std::ifstream file(folder_ / "arguments", std::ios::binary);
    for (std::string line; std::getline(file, line);) all.push_back(line);
    return all;
}

bool FakeZenity::wasAsked(const std::string& argument) const {
    const std::vector<std::string> all = arguments();
    return std::find(all.begin(), all.end(), argument) != all.end();
}

bool FakeZenity::isOpen() const {
    const std::string process = contentOf(folder_ / "process");
    return !process.empty() && kill(std::stoi(process), 0) == 0;
}

}  // namespace vanta::test
