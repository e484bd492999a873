#pragma once

#include "texture/IGLTexture.h"

/// A two-dimensional or rectangle texture.
///
/// Uploads take rows as the unpack state in force says (alignment 4 unless changed); the caller sizes the
/// data. Sizes are used as they are: one that is no power of two needs a rectangle texture or an
/// implementation that allows it. Every operation that uploads leaves the texture bound to the active unit.
class ORLOGL_API GLTexture2D : public IGLTexture {
public:
    GLTexture2D();

    /// A rectangle texture when `rectangle` is set and rectangle textures are offered, otherwise an ordinary
    /// one.
    GLTexture2D(RasterFormat format, bool rectangle);

    /// Unbinds its target.
    ~GLTexture2D() override;

    /// Binds to its target; false without a name.
    bool bind() override;

    /// Stores a size and makes no storage.
    void setWidthHeight(unsigned width, unsigned height);

    /// Makes level 0, from `pixels` or undefined when null. Always true.
    bool GLloadImage(void* pixels, unsigned width, unsigned height);

    /// Makes one level. False, and nothing done, for a rectangle texture. The size is stored for level 0
    /// only.
    bool GLloadImageLevel(void* pixels, unsigned level, unsigned width, unsigned height);

    /// Makes all levels: by GL's automatic mipmaps where offered, otherwise by GLU. False, and nothing done,
    /// for a rectangle texture; false without a GLU where it is needed.
    bool GLloadImageMipmap(void* pixels, unsigned width, unsigned height);

    /// Copies width x height pixels at x, y of the current read buffer into level 0, which is made anew when
    /// it has another size. Always true.
    bool GLloadRenderedImage(int x, int y, int width, int height);

    /// How many there are, for leak hunts.
    static int32_t fsNumInstances_GLTexture2D;

    /// Whether level 0 has storage, as far as GLloadImage and GLloadRenderedImage made it.
    bool fAllocated = false;

private:
    GLenum target() const;
    void makeLevel(GLenum target, unsigned level, unsigned width, unsigned height, const void* pixels) const;
};
