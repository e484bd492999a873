#include "orlohost/ParticleData.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <utility>

namespace {

/// Takes `values` over if there are `count`, or none.
bool replace(std::vector<float>& kept, std::vector<float>& values, size_t count) {
    if (!values.empty() && values.size() != count)
        return false;
    kept = std::move(values);
    return true;
}

} // namespace

ParticleData::ParticleData() = default;
ParticleData::~ParticleData() = default;

bool ParticleData::setPositions(std::vector<float> positions, uint32_t samplesPerParticle) {
    const size_t floatsPerParticle = size_t{samplesPerParticle} * 3;
    if (samplesPerParticle == 0 || positions.size() % floatsPerParticle != 0 ||
        positions.size() / 3 > std::numeric_limits<uint32_t>::max())
        return false;
    fPositions = std::move(positions);
    fSamplesPerParticle = samplesPerParticle;
    fCount = static_cast<uint32_t>(fPositions.size() / floatsPerParticle);
    fVelocities.clear();
    fColors.clear();
    fData.clear();
    fFilter.clear();
    return true;
}

bool ParticleData::setVelocities(std::vector<float> velocities) {
    return replace(fVelocities, velocities, size_t{fCount} * 3);
}

bool ParticleData::setColors(std::vector<float> colors) {
    return replace(fColors, colors, size_t{fCount} * 4);
}

bool ParticleData::addData(const koString::CString& name, std::vector<float> values) {
    if (values.size() != fCount)
        return false;
    const int32_t index = getDataIndex(name);
    if (index < 0)
        fData.push_back({name, std::move(values)});
    else
        fData[static_cast<size_t>(index)].fValues = std::move(values);
    return true;
}

int32_t ParticleData::getDataIndex(const koString::CString& name) const {
    const auto found = std::find_if(fData.begin(), fData.end(),
                                    [&](const Data& data) { return koString::equal(data.fName, name); });
    return found == fData.end() ? -1 : static_cast<int32_t>(found - fData.begin());
}

const ParticleData::Data* ParticleData::getData(int32_t index) const {
    const auto wide = static_cast<size_t>(index);
    return index >= 0 && wide < fData.size() ? &fData[wide] : nullptr;
}
