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
    if (manager && typeid(*manager) == typeid(Manager)) // the usual case, without the search of a cast
        return static_cast<Manager*>(manager);
    return dynamic_cast<Manager*>(manager);
}

inline const char* textOf(const koString::CString& key) {
    return key.asChar();
}

inline const char* textOf(const koString::IString& key) {
    return key.asMultibyte();
}

/// The shader of that key, if it is the only one of a node's: the usual case, for a node that is always lit
/// alike, and one comparison instead of a map's two. Else null.
template <typename Shaders>
auto* onlyShader(Shaders& shaders, const char* key) {
    using Shader = typename Shaders::mapped_type;
    if (shaders.size() != 1 || std::strcmp(textOf(shaders.begin()->first), key) != 0)
        return static_cast<Shader*>(nullptr);
    return &shaders.begin()->second;
}
