#include "objects/Handles.h"

#include "objects/Effects.h"

namespace orlocg {

Global& global() {
    static auto* const theGlobal = new Global;
    return *theGlobal;
}

ContextObject::ContextObject() = default;
ContextObject::~ContextObject() = default;

ContextObject* find(CGcontext handle) {
    global().asked = nullptr;
    ContextObject* context = findOrRaise(global().contexts, handle, CG_INVALID_CONTEXT_HANDLE_ERROR);
    if (context)
        global().asked = handle;
    return context;
}

ProgramObject* find(CGprogram handle) {
    Global& all = global();
    all.asked = nullptr;
    ProgramObject* program = findOrRaise(all.programs, handle, CG_INVALID_PROGRAM_HANDLE_ERROR);
    if (program)
        all.asked = program->context->handle;
    return program;
}

ParameterObject* find(CGparameter handle) {
    global().asked = nullptr;
    ParameterObject* parameter = findOrRaise(global().parameters, handle, CG_INVALID_PARAM_HANDLE_ERROR);
    if (parameter)
        global().asked = parameter->context->handle;
    return parameter;
}

void raise(CGerror error) {
    if (global().error == CG_NO_ERROR)
        global().error = error;
    if (global().callback)
        global().callback();
    if (global().handler)
        global().handler(global().asked, error, global().handlerData);
}

} // namespace orlocg

using namespace orlocg;

ContextObject* orlocg_findContext(CGcontext handle) {
    return find(handle);
}

ProgramObject* orlocg_findProgram(CGprogram handle) {
    return find(handle);
}

ParameterObject* orlocg_findParameter(CGparameter handle) {
    return find(handle);
}

void orlocg_raise(CGerror error) {
    raise(error);
}

void orlocg_setBinding(Binding* binding) {
    global().binding = binding;
}
