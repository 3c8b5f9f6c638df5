#include "settings/RoamParameters.h"

namespace orbisk {

namespace {
constexpr double secondsPerRadius = 10.0;
constexpr double slowestSpeed = 1e-6; ///< metres a second
} // namespace

void RoamParameters::resetForModel(double radius) {
    modelRadius = radius;
    height = radius;
    secondsPerMetre = secondsPerRadius / radius;
}

void RoamParameters::setSpeed(double metresPerSecond) {
    secondsPerMetre =
        metresPerSecond >= slowestSpeed ? 1.0 / metresPerSecond : secondsPerRadius / modelRadius;
}

RoamParameters& roamParameters() {
    static RoamParameters parameters;
    return parameters;
}

} // namespace orbisk
