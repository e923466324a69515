#pragma once

#include <memory>
#include <string>
#include <vector>

namespace vanta::test {

/// A desktop portal for file dialogs on a session bus of its own, which is the environment's meanwhile.
class FakePortal {
public:
    struct Behaviour {
        unsigned version = 4;
        bool answers = true;         ///< else the dialog stays open
        bool namesRequests = false;  ///< by names of its own, as portals of old
        unsigned response = 0;       ///< 0 chosen, 1 turned away, 2 ended otherwise
        std::vector<std::string> uris = {};
    };

    explicit FakePortal(Behaviour behaviour);
    ~FakePortal();
    FakePortal(const FakePortal&) = delete;
    FakePortal& operator=(const FakePortal&) = delete;

    /// What was asked last: the method, and its arguments as GLib prints them.
    std::string method() const;
    std::string arguments() const;
    /// A dialog has been closed by whoever opened it.
    bool wasClosed() const;
    /// Goes from the bus, as after a crash.
    void vanish();

private:
    class Service;
    std::unique_ptr<Service> service_;
};

}  // namespace vanta::test
