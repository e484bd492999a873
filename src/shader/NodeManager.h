#pragma once

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
