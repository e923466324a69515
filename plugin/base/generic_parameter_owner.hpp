#pragma once

#include <memory>
#include <string>
#include <vector>

#include "foundation/property.hpp"
#include "foundation/updated_object.hpp"

namespace vanta {

class AbstractPluginParameter;

/// `flags` of `setValue` and `parameterChanged`: the change comes from the host, which need not hear of it.
inline constexpr int kFromHost = 1;
/// The same: a state is restored, which says itself what else has changed with it.
inline constexpr int kFromState = 2;

/// Owns parameters, or passes on to the object that does.
class GenericParameterOwner {
public:
    virtual ~GenericParameterOwner() = default;

    /// Opens and closes a block of changes that take effect together.
    virtual void beginChange() = 0;
    virtual void endChange() = 0;
    /// Hands over an object that the owner keeps and deletes.
    virtual void addManagedObject(std::unique_ptr<ManagedObject> object) = 0;
    virtual int parameterCount() const = 0;
    virtual AbstractPluginParameter* parameterAt(int index) const = 0;
    /// 0 for a whole plug-in, the first index of its own for a set.
    virtual int firstParameterIndex() const = 0;
    /// Called by a parameter after its value really changed. `index` counts over the whole plug-in.
    virtual void parameterChanged(int index, float value, int flags) = 0;
    /// Result: the parameter's index, counted over the whole plug-in.
    virtual int addParameter(AbstractPluginParameter& parameter) = 0;
    virtual int addGroupName(const std::string& name) = 0;
};

/// Holds a block of changes open for a scope.
class ChangeBlock {
public:
    explicit ChangeBlock(GenericParameterOwner& owner) : owner_(owner) { owner_.beginChange(); }
    ~ChangeBlock() { owner_.endChange(); }
    ChangeBlock(const ChangeBlock&) = delete;
    ChangeBlock& operator=(const ChangeBlock&) = delete;

private:
    GenericParameterOwner& owner_;
};

/// An owner with the list of deferred callbacks that its parameters feed.
class GenericParameterResponder : public GenericParameterOwner {
public:
    void addManagedObject(std::unique_ptr<ManagedObject> object) override {
        managed.push_back(std::move(object));
    }
    EventForwarderList& forwarderList() { return forwarders; }

protected:
    std::vector<std::unique_ptr<ManagedObject>> managed;
    EventForwarderList forwarders;
};

}  // namespace vanta
