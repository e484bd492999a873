#pragma once

#include "gl/Export.h"
#include "orlohost/HWInterfaces.h"
#include "orlohost/ParticleData.h"
#include "orlohost/koColor.h"
#include "orlohost/koLinear.h"

#include <cstdint>
#include <vector>

/// The viewer as the particles see it: place and up in the space of their object.
struct AlignmentInfo {
    float fCameraPosition[3]; ///< where the eye is, in the object's frame
    float fCameraUp[3];       ///< which way is up for it
    float fTwist;             ///< degrees
    float fScaleX;            ///< across
    float fScaleY;            ///< along the axis
    float fReserved;          ///< 1; read by nobody
};

/// What all particle drawers have in common: the particles, where the viewer is, the material, and offsets
/// that look random and are the same in every frame and every run.
///
///     GLParticleSpriteDraw drawer(particles);
///     drawer.setCamPositionOS(eye);
///     drawer.setCamUpVectorOS(up);
///     drawer.draw(nullptr, nullptr);
///
/// What is drawn: every particle, or of filtered data (ParticleData::isFiltered) the samples that their
/// filter names. A filter of the iterator's own never makes unfiltered data be drawn in part, and gives way
/// to that of filtered ones. A draw walks from the start: the host's iterator stays where it stands and is
/// told of no filter. A whole particle is drawn at each of its samples, as a sprite at the first; a sample
/// that a filter names is drawn alone, with its own place and all else (velocity, colour, named data,
/// texture) of its particle. Numbers beyond the samples are passed over.
///
/// Fields without an operation that sets them are the host's to set. All that calls GL needs the table and a
/// current context, with the object's model-view matrix in force; a drawer is made, told and destroyed
/// without.
class ORLOGL_API GLParticleDrawBase {
public:
    /// Draws nothing until it is told what: setData.
    GLParticleDrawBase();

    /// Takes a reference on the data. No GL.
    explicit GLParticleDrawBase(const ParticleData& data);

    /// Lets go of the data and deletes the iterator. The alignment record stays, as hosts keep the pointer
    /// that createAlignmentInfo gave them: delete it if you don't.
    virtual ~GLParticleDrawBase();

    GLParticleDrawBase(const GLParticleDrawBase&) = delete;
    GLParticleDrawBase& operator=(const GLParticleDrawBase&) = delete;

    /// Textures and their placement are for drawers that use them, and only for this call. Without data there
    /// is no GL call at all.
    virtual void draw(IHWTexPlacement* placement, std::vector<IHWTexture*>* textures) = 0;

    /// Takes a reference on the data and lets the old go. Point size, opacity, object colour and filter are
    /// theirs from now on; everything else still comes from the iterator, which walks the data that it was
    /// made for and holds no reference on them: call setIterator before you drop the old data. Where the
    /// drawer's reference was the last, the iterator goes with them, and the new data are walked.
    void setData(const ParticleData& data);

    /// Takes an iterator over: it has to be on the heap, and goes with the drawer. The one before is left to
    /// whoever made it.
    void setIterator(const ParticleDataIterator& iterator);

    /// Where the viewer is, in the space of the particles: `camPos` and `camUp` as they come out of the map
    /// that does `b` first, then `a`. Twist 0, scales 1. The drawer's until the next call. Null without
    /// memory.
    AlignmentInfo* createAlignmentInfo(const koLinear::Point& camPos, const koLinear::Vector& camUp,
                                       const koLinear::ProjMatrix& a, const koLinear::ProjMatrix& b);

    /// False, and nothing stored, without an alignment record.
    bool setAlignTwist(float degrees);

    /// Scales aligned particles across; false without alignment.
    bool setAlignScaleX(float scale);

    /// Scales them along their axis; false without alignment.
    bool setAlignScaleY(float scale);

    /// Four columns of four floats that turn something at `position` to the viewer, or about `axis`. Nothing
    /// is normalised. False without an alignment record or columns.
    bool alignToCamera(float* position, float* axis, float** columns) const;

    /// The same about `axis`, wherever it is: the axis is the third column, the eye's way across it the
    /// first.
    bool alignToYZ(float* axis, float** columns) const;

    /// For what is drawn lit: GL's shininess, 0 to 128, and colours, as glMaterialfv takes them.
    void setMaterialProperties(float shininess, koColor::Color& ambient, koColor::Color& diffuse,
                               koColor::Color& emission, koColor::Color& specular);

    /// Sends them to GL, for both faces.
    void applyMaterialProperties() const;

    /// Where in the random table the object begins, from its name. Gives back the name's length.
    int setObjectSeed(const char* name);

    /// A float from 0 up to 1 of the shared generator, or of one whose state is the caller's: 48 bits, low to
    /// high.
    static float drand48();

    /// The next number of a row, 0 to 1; `state` is its three words, changed by the call.
    static float erand48(unsigned short* state);

    /// The next three floats of the table's generator, good until the next call.
    static const float* generateRandom3();

    /// Fills the table, once per process. Every drawer's constructor calls it.
    static void initRandom3();

    /// How many entries the random table has.
    static constexpr int32_t kRandomCount = 11234;

    /// The table: three floats an entry, the same in every process.
    static float sfRandom3[kRandomCount][3];

    /// Whether the table is filled.
    static bool sfInitRandom3;

    ParticleData* fParticleData = nullptr;     ///< what is drawn; a reference
    ParticleDataIterator* fIterator = nullptr; ///< which of them, and in what order; owned
    AlignmentInfo* fAlignmentInfo = nullptr;   ///< set while particles are aligned; owned
    koLinear::ProjMatrix fObjectMatrix;        ///< object to eye
    uint64_t fReserved = 0;                    ///< read by nobody

    bool fLit = false;                  ///< colours are sent as materials
    bool fTextureCycling = false;       ///< sprites: a texture for each particle
    bool fIgnoreParticleColors = false; ///< leaves the current colour in force, or its red, green and blue
    bool fNoTailFade = false;           ///< streaks without their particles' colours: tails as dense as heads

    int32_t fRandomCursor = 0; ///< where in the table the drawing stands; may be negative

    /// Where the random table is begun to be read.
    uint32_t fSeed = 0;
    int32_t fRandomBlock = 0;  ///< moves the object's beginning in the table by 64 entries
    int32_t fMultiCount = 0;   ///< points or streaks per sample, each moved by the table; 0: one, not moved
    float fMultiRadius = 1.0F; ///< what the table's offsets are multiplied by
    float fShininess = 0.0F;   ///< as GL takes it
    koColor::Color fAmbient;   ///< of what is lit
    koColor::Color fDiffuse;   ///< of what is lit
    koColor::Color fEmission;  ///< of what is lit
    koColor::Color fSpecular;  ///< of what is lit
};
