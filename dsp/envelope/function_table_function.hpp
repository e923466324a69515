#pragma once

namespace vanta {

/// What a function table is made from. Called only while a table is filled.
class FunctionTableFunction {
public:
    virtual ~FunctionTableFunction() = default;
    virtual double operator()(double x) const = 0;
};

}  // namespace vanta
