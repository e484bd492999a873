#pragma once

#include <cstring>
#include <new>
#include <typeinfo>

#include <orlohost/ShadingNodeSpec.h>

/// The manager that keeps a node's shaders, made of `arguments` where the node has none yet. Null where the
/// node's is of another kind or memory is short.
template <typename Manager, typename... Arguments>
Manager* managerOf(koShadingDag::ShadingNodeSpec& node, Arguments... arguments) {
    if (!node.shaderManager())
        node.assignShaderManager(new (std::nothrow) Manager(arguments...));
    IHWShaderManager* manager = node.shaderManager();
    if (manager && &typeid(*manager) == &typeid(Manager)) // the usual case, without the search of a cast
        return static_cast<Manager*>(manager);
    return dynamic_cast<Manager*>(manager);
}

inline bool isKey(const koString::CString& known, const koString::CString& key) {
    return known == key;
}

inline bool isKey(const koString::IString& known, const koString::CString& key) {
    return std::strcmp(known.asMultibyte(), key.asChar()) == 0;
}

/// The shader of that key, if it is the only one of a node's: the usual case, for a node that is always lit
/// alike, and one comparison instead of a map's two. Else null.
template <typename Shaders>
auto* onlyShader(Shaders& shaders, const koString::CString& key) {
    using Shader = typename Shaders::mapped_type;
    if (shaders.size() != 1 || !isKey(shaders.begin()->first, key))
        return static_cast<Shader*>(nullptr);
    return &shaders.begin()->second;
}
