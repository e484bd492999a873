#pragma once

#include "orlohost/Export.h"
#include "orlohost/koColor.h"
#include "orlohost/koSharedObject.h"
#include "orlohost/koString.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// The particles of one object, and the walk over them.
//
//     auto* smoke = new ParticleData;
//     smoke->ref();
//     smoke->setPositions({0, 0, 0, 1, 0, 0});
//     smoke->setColors({1, 1, 1, 1, 1, 1, 1, 0.5F});
//     smoke->addData("scaleX", {1, 2});

/// Particles: places, velocities, colours, and what else is known of each by name.
///
/// A particle has one position, or several samples of it (the places it was seen at while a shutter was open,
/// say). Everything else is one value per particle. Reference-counted, so on the heap: the drawers hold it.
class ORLOHOST_API ParticleData : public koSharedObject::SharedObject {
public:
    /// One float per particle under a name. The sprite drawer reads "twist" (degrees), "textureNumber",
    /// "scaleX" and "scaleY".
    struct Data {
        koString::CString fName;    ///< by which it is found
        std::vector<float> fValues; ///< one a particle
    };

    ParticleData();
    ~ParticleData() override;

    /// Three floats a sample, the samples of a particle one behind the other. Begins anew: drops velocities,
    /// colours, named data and the filter. False, and nothing changed, where the floats don't make whole
    /// particles.
    bool setPositions(std::vector<float> positions, uint32_t samplesPerParticle = 1);

    /// Per particle three floats, units per second; red, green, blue and alpha. False, and nothing changed,
    /// for another number of floats. None at all takes them away.
    bool setVelocities(std::vector<float> velocities);

    /// Red, green, blue, alpha, 0 to 1.
    bool setColors(std::vector<float> colors);

    /// Adds or replaces named data. False, and nothing changed, unless there is one float per particle.
    bool addData(const koString::CString& name, std::vector<float> values);

    /// The number of the data of that name, and the data of a number; -1 and null where there is none.
    int32_t getDataIndex(const koString::CString& name) const;

    /// The data of that number; null where there are none.
    const Data* getData(int32_t index) const;

    /// Particles, and the samples of all of them together.
    uint32_t count() const { return fCount; }
    uint32_t samplesPerParticle() const { return fSamplesPerParticle; }   ///< 1 or more
    uint32_t sampleCount() const { return fCount * fSamplesPerParticle; } ///< of all particles

    /// Null where there are none.
    const float* positions() const { return fCount ? fPositions.data() : nullptr; }

    /// X, y, z for each particle, or null.
    const float* velocities() const { return fVelocities.empty() ? nullptr : fVelocities.data(); }

    /// Red, green, blue, alpha for each particle, or null.
    const float* colors() const { return fColors.empty() ? nullptr : fColors.data(); }

    /// Whether only the samples of fFilter are drawn.
    bool isFiltered() const { return fFilterEnabled && !fFilter.empty(); }

    /// Pixels.
    float fPointSize = 1.0F;

    /// Of the object as a whole, for drawers that are told to leave the particles' colours alone.
    float fOpacity = 1.0F;

    /// Of particles without a colour of their own.
    koColor::Color fObjectColor{1.0F, 1.0F, 1.0F, 1.0F};

    /// The samples to draw, by number, in that order; numbers beyond the last are passed over.
    bool fFilterEnabled = false;

    /// Which particles are drawn, by number; empty: all.
    std::vector<uint32_t> fFilter;

private:
    uint32_t fCount = 0;
    uint32_t fSamplesPerParticle = 1;
    std::vector<float> fPositions;
    std::vector<float> fVelocities;
    std::vector<float> fColors;
    std::vector<Data> fData;
};

/// Walks the particles of an object, or the samples that a filter names.
///
///     for (ParticleDataIterator it(data, nullptr, 0); !it.done(); it.advance())
///         use(it.position(), it.color());
///
/// Owns nothing: the data and the filter's numbers have to outlive it. What the data are told meanwhile shows
/// at once.
class ParticleDataIterator {
public:
    /// With a null filter all particles, each at its first sample.
    ParticleDataIterator(const ParticleData& data, const uint32_t* filter, uint32_t filterCount)
        : fData(&data) {
        setFilter(filter, filterCount);
    }

    /// Back to the start.
    void reset() { fCounter = 0; }

    /// Walks these samples from now on; all particles where it is null or empty.
    void setFilter(const uint32_t* filter, uint32_t filterCount) {
        fFilter = filterCount ? filter : nullptr;
        fFilterCount = filter ? filterCount : 0;
    }

    const ParticleData& data() const { return *fData; } ///< what is walked through
    const uint32_t* filter() const { return fFilter; }  ///< which of them, or null for all

    /// Steps in all, and those taken.
    uint32_t count() const { return fFilter ? fFilterCount : fData->count(); }
    uint32_t counter() const { return fCounter; }     ///< how many have been walked past
    bool done() const { return fCounter >= count(); } ///< whether all are through
    void advance() { ++fCounter; }                    ///< to the next

    /// Samples that each particle has.
    uint32_t stride() const { return fData->samplesPerParticle(); }

    /// Where it stands: the sample and the particle by number. Both may lie beyond the data, if the filter
    /// says so; then there is nothing to read below.
    uint32_t sample() const { return fFilter ? fFilter[fCounter] : fCounter * stride(); }
    uint32_t particle() const { return sample() / stride(); } ///< the number of the current particle

    /// The three floats of the sample, the three and the four of the particle; null where there are none.
    const float* position() const { return element(fData->positions(), sample(), 3); }

    /// Of the current particle, or null.
    const float* velocity() const { return element(fData->velocities(), particle(), 3); }

    /// Of the current particle, or null.
    const float* color() const { return element(fData->colors(), particle(), 4); }

private:
    const float* element(const float* values, uint32_t index, size_t components) const {
        return values && sample() < fData->sampleCount() ? values + index * components : nullptr;
    }

    const ParticleData* fData;
    const uint32_t* fFilter = nullptr;
    uint32_t fFilterCount = 0;
    uint32_t fCounter = 0;
};
