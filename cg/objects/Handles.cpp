#include "objects/Handles.h"

namespace orlocg {

Global& global() {
    static auto* const theGlobal = new Global;
    return *theGlobal;
}

ContextObject* find(CGcontext handle) {
    return findOrRaise(global().contexts, handle, CG_INVALID_CONTEXT_HANDLE_ERROR);
}

ProgramObject* find(CGprogram handle) {
    return findOrRaise(global().programs, handle, CG_INVALID_PROGRAM_HANDLE_ERROR);
}

ParameterObject* find(CGparameter handle) {
    return findOrRaise(global().parameters, handle, CG_INVALID_PARAM_HANDLE_ERROR);
}

void raise(CGerror error) {
    if (global().error == CG_NO_ERROR)
        global().error = error;
    if (global().callback)
        global().callback();
}

} // namespace orlocg

using namespace orlocg;

ProgramObject* orlocg_findProgram(CGprogram handle) {
    return find(handle);
}

ParameterObject* orlocg_findParameter(CGparameter handle) {
    return find(handle);
}

void orlocg_raise(CGerror error) {
    raise(error);
}
