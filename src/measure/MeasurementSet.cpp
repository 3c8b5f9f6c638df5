#include "measure/MeasurementSet.h"

namespace orbisk {

void MeasurementSet::clear() {
    *this = MeasurementSet();
}

MeasurementSet& measurementSet() {
    static MeasurementSet set;
    return set;
}

} // namespace orbisk
