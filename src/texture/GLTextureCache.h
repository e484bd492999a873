#pragma once

#include "gl/Export.h"

#include <cstdint>
#include <list>

/// A texture that is known by its GL name.
struct GLTextureCacheEntry {
    uint32_t fId = 0;         ///< the GL name
    void* fTexture = nullptr; ///< the host's texture object, which stays the host's
};

/// Finds uploaded textures again by their GL name, and deletes all of them when it goes.
///
/// All caches of a process share one list, HWTextureCacheList: what one has added every other finds, and the
/// first that is destroyed deletes the GL textures of all, those included whose texture objects the host
/// still holds. That needs the table and a current context; nothing else calls GL.
class ORLOGL_API GLTextureCache {
public:
    GLTextureCache();
    ~GLTextureCache();

    GLTextureCache(const GLTextureCache&) = delete;
    GLTextureCache& operator=(const GLTextureCache&) = delete;

    /// Does nothing.
    void initialize();

    /// Appends an entry; an id may be added more than once. Without memory nothing is added.
    void add(void* texture, unsigned int id);

    /// The first entry with this id, or null.
    GLTextureCacheEntry* find(unsigned int id);

    /// The texture of that entry. Ask for ids that were added; for any other the answer is null.
    void* find_texture(unsigned int id);

    /// Takes the first entry with this id off the list. Its record stays in memory, and so does the GL
    /// texture: who still holds what `find` gave may use it.
    void remove(unsigned int id);

    /// This cache, told to who asks by an entry.
    GLTextureCache* fSelf = nullptr;
};

/// The entries of all caches in the order in which they were added. Never destroyed, so that a cache of
/// static storage may still empty it at the program's end.
ORLOGL_API extern std::list<GLTextureCacheEntry*>& HWTextureCacheList;
