#include "measure/BoxNode.h"

#include <cmath>
#include <limits>

#if defined(__SSE2__) || defined(_M_X64)
#define ORBISK_HAS_SSE2
#include <emmintrin.h>
#endif

namespace orbisk {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

/// Where a line crosses the planes of a node's grid on one axis: `step` times the plane's number
/// plus `nearBase` or `farBase`, padding included.
struct Crossing {
    float step;
    float nearBase;
    float farBase;
};

Crossing crossingOf(const BoxNode& node, const BoxLine& line, std::size_t axis, float padding) {
    const float inverse = line.inverse[axis];
    const float base = (node.low[axis] - line.origin[axis]) * inverse;
    const float slack = padding * std::abs(inverse);
    return {node.step[axis] * inverse, base - slack, base + slack};
}

float paddingOf(const BoxNode& node, const BoxLine& line) {
    return line.padding + node.gain * line.paddingPerGain;
}

unsigned int existing(const BoxNode& node) {
    return (1u << node.children) - 1;
}

} // namespace

unsigned int BoxNode::meetPortably(const BoxLine& line, float limit, Places& begins) const {
    const float padding = paddingOf(*this, line);
    Places ends;
    begins.fill(-infinity);
    ends.fill(infinity);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const Crossing crossing = crossingOf(*this, line, axis, padding);
        const Steps& nearSteps = bounds[line.nearBound[axis]];
        const Steps& farSteps = bounds[line.farBound[axis]];
        for (std::size_t i = 0; i < width; ++i) {
            // What is no number, by overflow, leaves the other as it is.
            const float in = static_cast<float>(nearSteps[i]) * crossing.step + crossing.nearBase;
            const float out = static_cast<float>(farSteps[i]) * crossing.step + crossing.farBase;
            begins[i] = in > begins[i] ? in : begins[i];
            ends[i] = out < ends[i] ? out : ends[i];
        }
    }
    unsigned int met = 0;
    for (std::size_t i = 0; i < width; ++i) {
        const bool isMet = begins[i] <= ends[i];
        begins[i] -= padding;
        met |= isMet && !(begins[i] > limit) ? 1u << i : 0u;
    }
    return met & existing(*this);
}

#ifdef ORBISK_HAS_SSE2

namespace {

constexpr std::size_t half = BoxNode::width / 2;

/// A number for each child.
struct Numbers {
    __m128 low;
    __m128 high;
};

Numbers asNumbers(const BoxNode::Steps& steps) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(steps.data()));
    const __m128i words = _mm_unpacklo_epi8(bytes, zero);
    return {_mm_cvtepi32_ps(_mm_unpacklo_epi16(words, zero)),
            _mm_cvtepi32_ps(_mm_unpackhi_epi16(words, zero))};
}

Numbers crossed(const BoxNode::Steps& steps, float step, float base) {
    const Numbers numbers = asNumbers(steps);
    const __m128 factor = _mm_set1_ps(step);
    const __m128 start = _mm_set1_ps(base);
    return {_mm_add_ps(_mm_mul_ps(numbers.low, factor), start),
            _mm_add_ps(_mm_mul_ps(numbers.high, factor), start)};
}

} // namespace

unsigned int BoxNode::meet(const BoxLine& line, float limit, Places& begins) const {
    const float padding = paddingOf(*this, line);
    Numbers begin{_mm_set1_ps(-infinity), _mm_set1_ps(-infinity)};
    Numbers end{_mm_set1_ps(infinity), _mm_set1_ps(infinity)};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const Crossing crossing = crossingOf(*this, line, axis, padding);
        const Numbers in = crossed(bounds[line.nearBound[axis]], crossing.step, crossing.nearBase);
        const Numbers out = crossed(bounds[line.farBound[axis]], crossing.step, crossing.farBase);
        // Of two, the second is taken where one is no number.
        begin = {_mm_max_ps(in.low, begin.low), _mm_max_ps(in.high, begin.high)};
        end = {_mm_min_ps(out.low, end.low), _mm_min_ps(out.high, end.high)};
    }
    const __m128 slack = _mm_set1_ps(padding);
    const __m128 most = _mm_set1_ps(limit);
    const Numbers padded{_mm_sub_ps(begin.low, slack), _mm_sub_ps(begin.high, slack)};
    const __m128 lower =
        _mm_and_ps(_mm_cmple_ps(begin.low, end.low), _mm_cmpngt_ps(padded.low, most));
    const __m128 upper =
        _mm_and_ps(_mm_cmple_ps(begin.high, end.high), _mm_cmpngt_ps(padded.high, most));
    _mm_storeu_ps(begins.data(), padded.low);
    _mm_storeu_ps(begins.data() + half, padded.high);
    const auto met =
        static_cast<unsigned int>(_mm_movemask_ps(lower) | (_mm_movemask_ps(upper) << half));
    return met & existing(*this);
}

#else

unsigned int BoxNode::meet(const BoxLine& line, float limit, Places& begins) const {
    return meetPortably(line, limit, begins);
}

#endif

} // namespace orbisk
