#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

#include "aax_host_interfaces.hpp"

/// Between a parameter's real values and 0 to 1.
template <typename T>
class AAX_ITaperDelegate {
public:
    virtual ~AAX_ITaperDelegate() = default;
    virtual T GetMinimumValue() const = 0;
    virtual T GetMaximumValue() const = 0;
    virtual T ConstrainRealValue(T value) const = 0;
    virtual T NormalizedToReal(double normalized) const = 0;
    virtual double RealToNormalized(T value) const = 0;
};

/// Between a parameter's real values and texts.
template <typename T>
class AAX_IDisplayDelegate {
public:
    virtual ~AAX_IDisplayDelegate() = default;
    /// `maxLength` 0: no limit.
    virtual bool ValueToString(T value, std::int32_t maxLength, std::string* text) const = 0;
    virtual bool StringToValue(const std::string& text, T* value) const = 0;
};

/// Off below the middle, on from there.
template <typename T>
class AAX_CBinaryTaperDelegate final : public AAX_ITaperDelegate<T> {
public:
    T GetMinimumValue() const override { return T(false); }
    T GetMaximumValue() const override { return T(true); }
    T ConstrainRealValue(T value) const override { return value; }
    T NormalizedToReal(double normalized) const override { return T(normalized >= 0.5); }
    double RealToNormalized(T value) const override { return value ? 1.0 : 0.0; }
};

template <typename T>
class AAX_CBinaryDisplayDelegate final : public AAX_IDisplayDelegate<T> {
public:
    AAX_CBinaryDisplayDelegate(std::string off, std::string on) : off_(std::move(off)), on_(std::move(on)) {}
    bool ValueToString(T value, std::int32_t maxLength, std::string* text) const override {
        const std::string& whole = value ? on_ : off_;
        *text = maxLength > 0 ? whole.substr(0, static_cast<std::size_t>(maxLength)) : whole;
        return true;
    }
    bool StringToValue(const std::string& text, T* value) const override {
        if (text != off_ && text != on_) return false;
        *value = T(text == on_);
        return true;
    }

private:
    std::string off_;
    std::string on_;
};

/// Whole numbers, evenly spread.
template <typename T>
class AAX_CStateTaperDelegate final : public AAX_ITaperDelegate<T> {
public:
    AAX_CStateTaperDelegate(T minimum, T maximum) : minimum_(minimum), maximum_(maximum) {}
    T GetMinimumValue() const override { return minimum_; }
    T GetMaximumValue() const override { return maximum_; }
    T ConstrainRealValue(T value) const override { return std::clamp(value, minimum_, maximum_); }
    T NormalizedToReal(double normalized) const override {
        const double steps = std::clamp(normalized, 0.0, 1.0) * static_cast<double>(maximum_ - minimum_);
        return minimum_ + static_cast<T>(std::floor(steps + 0.5));
    }
    double RealToNormalized(T value) const override {
        if (maximum_ <= minimum_) return 0.0;
        return static_cast<double>(ConstrainRealValue(value) - minimum_) /
               static_cast<double>(maximum_ - minimum_);
    }

private:
    T minimum_;
    T maximum_;
};

/// A host parameter. Any thread but the audio thread.
class AAX_IParameter {
public:
    enum class EType { Discrete, Continuous };

    virtual ~AAX_IParameter() = default;
    virtual AAX_CParamID Identifier() const = 0;
    virtual const std::string& Name() const = 0;
    virtual bool Automatable() const = 0;
    virtual EType Type() const = 0;
    virtual std::int32_t GetNumberOfSteps() const = 0;
    /// Before this the parameter has no host to ask.
    virtual void SetAutomationDelegate(AAX_IAutomationDelegate* delegate) = 0;

    virtual double GetNormalizedValue() const = 0;
    virtual double GetNormalizedDefaultValue() const = 0;
    /// Asks the host to set a value.
    virtual AAX_Result SetNormalizedValue(double normalized) = 0;
    /// The host sets it.
    virtual void UpdateNormalizedValue(double normalized) = 0;
    virtual AAX_Result Touch() = 0;
    virtual AAX_Result Release() = 0;

    virtual bool GetStringFromNormalizedValue(double normalized, std::int32_t maxLength,
                                              std::string* text) const = 0;
    virtual bool GetNormalizedValueFromString(const std::string& text, double* normalized) const = 0;

    // The real value. The setters ask the host, as SetNormalizedValue does. False for another type.

    virtual bool GetValueAsInt32(std::int32_t* value) const = 0;
    virtual bool GetValueAsFloat(float* value) const = 0;
    virtual bool SetValueWithInt32(std::int32_t value) = 0;
    virtual bool SetValueWithFloat(float value) = 0;
};

template <typename T>
class AAX_CParameter final : public AAX_IParameter {
public:
    AAX_CParameter(std::string id, std::string name, T defaultValue,
                   std::unique_ptr<AAX_ITaperDelegate<T>> taper,
                   std::unique_ptr<AAX_IDisplayDelegate<T>> display, bool automatable)
        : id_(std::move(id)),
          name_(std::move(name)),
          default_(defaultValue),
          value_(defaultValue),
          taper_(std::move(taper)),
          display_(std::move(display)),
          automatable_(automatable) {}
    ~AAX_CParameter() override {
        if (delegate_ && automatable_) delegate_->UnregisterParameter(Identifier());
    }

    void SetNumberOfSteps(std::int32_t steps) { steps_ = steps; }
    void SetType(EType type) { type_ = type; }

    AAX_CParamID Identifier() const override { return id_.c_str(); }
    const std::string& Name() const override { return name_; }
    bool Automatable() const override { return automatable_; }
    EType Type() const override { return type_; }
    std::int32_t GetNumberOfSteps() const override { return steps_; }
    void SetAutomationDelegate(AAX_IAutomationDelegate* delegate) override {
        delegate_ = delegate;
        if (delegate_ && automatable_) delegate_->RegisterParameter(Identifier());
    }

    double GetNormalizedValue() const override { return taper_->RealToNormalized(value_.load()); }
    double GetNormalizedDefaultValue() const override { return taper_->RealToNormalized(default_); }
    AAX_Result SetNormalizedValue(double normalized) override {
        return delegate_ ? delegate_->PostSetValueRequest(Identifier(), normalized) : AAX_ERROR_NULL_OBJECT;
    }
    void UpdateNormalizedValue(double normalized) override {
        value_.store(taper_->ConstrainRealValue(taper_->NormalizedToReal(normalized)));
    }
    AAX_Result Touch() override {
        return delegate_ ? delegate_->PostTouchRequest(Identifier()) : AAX_ERROR_NULL_OBJECT;
    }
    AAX_Result Release() override {
        return delegate_ ? delegate_->PostReleaseRequest(Identifier()) : AAX_ERROR_NULL_OBJECT;
    }

    bool GetStringFromNormalizedValue(double normalized, std::int32_t maxLength,
                                      std::string* text) const override {
        return display_->ValueToString(taper_->NormalizedToReal(normalized), maxLength, text);
    }
    bool GetNormalizedValueFromString(const std::string& text, double* normalized) const override {
        T value{};
        if (!display_->StringToValue(text, &value)) return false;
        *normalized = taper_->RealToNormalized(taper_->ConstrainRealValue(value));
        return true;
    }

    bool GetValueAsInt32(std::int32_t* value) const override { return getAs(value); }
    bool GetValueAsFloat(float* value) const override { return getAs(value); }
    bool SetValueWithInt32(std::int32_t value) override { return setWith(value); }
    bool SetValueWithFloat(float value) override { return setWith(value); }

private:
    template <typename Other>
    bool getAs([[maybe_unused]] Other* value) const {
        if constexpr (std::is_same_v<Other, T>) {
            *value = value_.load();
            return true;
        }
        return false;
    }
    template <typename Other>
    bool setWith([[maybe_unused]] Other value) {
        if constexpr (std::is_same_v<Other, T>) {
            return SetNormalizedValue(taper_->RealToNormalized(taper_->ConstrainRealValue(value))) ==
                   AAX_SUCCESS;
        }
        return false;
    }

    const std::string id_;
    const std::string name_;
    const T default_;
    std::atomic<T> value_;
    const std::unique_ptr<AAX_ITaperDelegate<T>> taper_;
    const std::unique_ptr<AAX_IDisplayDelegate<T>> display_;
    const bool automatable_;
    std::int32_t steps_ = 0;
    EType type_ = EType::Continuous;
    AAX_IAutomationDelegate* delegate_ = nullptr;
};
