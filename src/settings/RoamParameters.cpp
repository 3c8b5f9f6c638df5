#include "settings/RoamParameters.h"

namespace orbisk {

namespace {
constexpr double secondsPerRadius = 10.0;
}

void RoamParameters::resetForModel(double radius) {
    modelRadius = radius;
    height = radius;
    secondsPerMetre = secondsPerRadius / radius;
}

RoamParameters& roamParameters() {
    static RoamParameters parameters;
    return parameters;
}

} // namespace orbisk
