#pragma once

#include <cmath>

namespace orbisk {

/// A number of twice the precision of a double, as the sum of two: about 32 decimal digits, and the
/// range of a double. After Dekker, "A Floating-Point Technique for Extending the Available
/// Precision", and Knuth's sum without error.
class DoubleDouble {
public:
    DoubleDouble() = default;
    explicit DoubleDouble(double value) : m_high(value) {}

    /// The nearest double.
    double rounded() const { return m_high; }

    friend DoubleDouble operator+(const DoubleDouble& a, const DoubleDouble& b) {
        DoubleDouble sum = sumOf(a.m_high, b.m_high);
        const DoubleDouble low = sumOf(a.m_low, b.m_low);
        sum = quickSumOf(sum.m_high, sum.m_low + low.m_high);
        return quickSumOf(sum.m_high, sum.m_low + low.m_low);
    }

    friend DoubleDouble operator-(const DoubleDouble& a, const DoubleDouble& b) {
        return a + DoubleDouble(-b.m_high, -b.m_low);
    }

    friend DoubleDouble operator*(const DoubleDouble& a, const DoubleDouble& b) {
        const double high = a.m_high * b.m_high;
        const double rest = std::fma(a.m_high, b.m_high, -high);
        return quickSumOf(high, rest + (a.m_high * b.m_low + a.m_low * b.m_high));
    }

    DoubleDouble& operator+=(const DoubleDouble& other) { return *this = *this + other; }

private:
    DoubleDouble(double high, double low) : m_high(high), m_low(low) {}

    /// The exact sum.
    static DoubleDouble sumOf(double a, double b) {
        const double sum = a + b;
        const double part = sum - a;
        return {sum, (a - (sum - part)) + (b - part)};
    }

    /// The same where `a` is the larger one.
    static DoubleDouble quickSumOf(double a, double b) {
        const double sum = a + b;
        return {sum, b - (sum - a)};
    }

    double m_high = 0.0;
    double m_low = 0.0; ///< at most half a unit in the last place of the other
};

} // namespace orbisk
