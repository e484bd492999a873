#include "texture/GLTextureCache.h"

#include "gl/GLFunctionTable.h"

#include <algorithm>
#include <new>

std::list<GLTextureCacheEntry*>& HWTextureCacheList = *new std::list<GLTextureCacheEntry*>;

GLTextureCache::GLTextureCache() {
    initialize();
    fSelf = this;
}

GLTextureCache::~GLTextureCache() {
    while (!HWTextureCacheList.empty()) {
        const GLTextureCacheEntry* entry = HWTextureCacheList.front();
        GLFunctionTable::fpGlobalFunctionTable->glDeleteTextures(1, &entry->fId);
        delete entry;
        HWTextureCacheList.pop_front();
    }
}

void GLTextureCache::initialize() {}

void GLTextureCache::add(void* texture, unsigned int id) {
    auto* entry = new (std::nothrow) GLTextureCacheEntry{id, texture};
    if (!entry)
        return;
    try {
        HWTextureCacheList.push_back(entry);
    } catch (const std::bad_alloc&) {
        delete entry;
    }
}

GLTextureCacheEntry* GLTextureCache::find(unsigned int id) {
    const auto found = std::find_if(HWTextureCacheList.begin(), HWTextureCacheList.end(),
                                    [id](const GLTextureCacheEntry* entry) { return entry->fId == id; });
    return found == HWTextureCacheList.end() ? nullptr : *found;
}

void* GLTextureCache::find_texture(unsigned int id) {
    const GLTextureCacheEntry* entry = find(id);
    return entry ? entry->fTexture : nullptr;
}

void GLTextureCache::remove(unsigned int id) {
    if (GLTextureCacheEntry* entry = find(id))
        HWTextureCacheList.remove(entry);
}
