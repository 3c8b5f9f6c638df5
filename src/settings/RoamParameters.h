#pragma once

namespace orbisk {

/// Parameters of the automatic roam. They live for one run and are never saved.
struct RoamParameters {
    double modelRadius = 0.0;     ///< bounding radius of the last opened model, metres
    double height = 0.0;          ///< of the camera above the path, metres
    double secondsPerMetre = 0.0; ///< the reciprocal of the roam's speed
    double roll = 0.0;            ///< degrees
    double pitch = 0.0;           ///< degrees
    double yaw = 0.0;             ///< degrees

    /// Takes over the bounding radius (metres) of a newly opened model: the camera flies one
    /// radius above the path and crosses one radius in ten seconds. The angles stay. A radius of
    /// zero gives an infinite pace.
    void resetForModel(double radius);

    /// The roam's speed, metres a second; infinite at a pace of zero.
    double speed() const { return 1.0 / secondsPerMetre; }

    /// Sets the pace by a speed (metres a second). One below a millionth of that, or none at all,
    /// gives the pace that the model began with: infinite before any model was opened.
    void setSpeed(double metresPerSecond);
};

/// The one record of the process; used on the user-interface thread only.
RoamParameters& roamParameters();

} // namespace orbisk
