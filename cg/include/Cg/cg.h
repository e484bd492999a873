#pragma once

// The interface of the Cg core runtime, libCg.so: programs and their parameters, effects and their states.
// Plain C.
//
//     CGcontext context = cgCreateContext();
//     CGprogram program = cgCreateProgram(context, CG_SOURCE, source, CG_PROFILE_ARBFP1, "main", 0);
//     if (!program)
//         puts(cgGetLastListing(context));
//     CGparameter gain = cgGetNamedParameter(program, "light.gain");
//
// Handles are checked: a stale or foreign one is an error, never a crash. Strings and arrays that are given
// back stay until the object that they are of goes, or until the next call of the same function on it. Not
// thread-safe.

#include <Cg/cgEnumerants.h>

#ifdef __cplusplus
extern "C" {
#endif

#define CG_VERSION_NUM 3100
#define CGENTRY
#define CG_API extern

typedef int CGbool;
#define CG_FALSE ((CGbool)0)
#define CG_TRUE ((CGbool)1)

typedef struct _CGcontext* CGcontext;
typedef struct _CGprogram* CGprogram;
typedef struct _CGparameter* CGparameter;
typedef struct _CGbuffer* CGbuffer;
typedef struct _CGobj* CGobj;
typedef struct _CGeffect* CGeffect;
typedef struct _CGtechnique* CGtechnique;
typedef struct _CGpass* CGpass;
typedef struct _CGstate* CGstate;
typedef struct _CGstateassignment* CGstateassignment;
typedef struct _CGannotation* CGannotation;
typedef void* CGhandle;

typedef void (*CGerrorCallbackFunc)(void);
typedef void (*CGerrorHandlerFunc)(CGcontext context, CGerror error, void* data);
typedef CGbool (*CGstatecallback)(CGstateassignment assignment);
typedef void (*CGIncludeCallbackFunc)(CGcontext context, const char* fileName);

// Contexts own programs, programs own parameters; what is owned goes with its owner.
CGcontext cgCreateContext(void);
void cgDestroyContext(CGcontext context);
CGbool cgIsContext(CGcontext context);

// What the compiler had to say last, errors and warnings, a line each; null: nothing yet.
const char* cgGetLastListing(CGcontext context);
void cgSetLastListing(CGhandle contextOrProgram, const char* listing);

// When a program is compiled once more whose source or literal parameters were changed:
// CG_COMPILE_IMMEDIATE, at once, CG_COMPILE_LAZY, when it is needed, CG_COMPILE_MANUAL, by cgCompileProgram.
void cgSetAutoCompile(CGcontext context, CGenum mode);
CGenum cgGetAutoCompile(CGcontext context);

// Whether values go to GL when they are set (CG_IMMEDIATE_PARAMETER_SETTING), or when the program is bound or
// cgUpdateProgramParameters is called (CG_DEFERRED_PARAMETER_SETTING).
void cgSetParameterSettingMode(CGcontext context, CGenum mode);
CGenum cgGetParameterSettingMode(CGcontext context);
void cgUpdateProgramParameters(CGprogram program);

// Gives back the policy until now. There are no locks: CG_NO_LOCKS_POLICY alone is taken.
CGenum cgSetLockingPolicy(CGenum policy);
CGenum cgGetLockingPolicy(void);

// Files that #include finds before those on the disk, by the name that the program writes. A null text takes
// one away; a null name all. The callback is called for a name that isn't there yet.
void cgSetCompilerIncludeString(CGcontext context, const char* name, const char* source);
void cgSetCompilerIncludeFile(CGcontext context, const char* name, const char* fileName);
void cgSetCompilerIncludeCallback(CGcontext context, CGIncludeCallbackFunc callback);
CGIncludeCallbackFunc cgGetCompilerIncludeCallback(CGcontext context);

const char* cgGetString(CGenum name); // CG_VERSION

// Compiles a program. Null with CG_COMPILER_ERROR where it has an error, and the listing says which. `args`:
// null, or switches up to a null: "-Ifolder", "-DNAME=VALUE", "-posinv"; others are passed over. CG_OBJECT
// takes what cgGetProgramString gave of a compiled program.
CGprogram cgCreateProgram(CGcontext context, CGenum programType, const char* program, CGprofile profile,
                          const char* entry, const char** args);
CGprogram cgCreateProgramFromFile(CGcontext context, CGenum programType, const char* fileName,
                                  CGprofile profile, const char* entry, const char** args);
CGprogram cgCopyProgram(CGprogram program);
void cgDestroyProgram(CGprogram program);
CGprogram cgGetFirstProgram(CGcontext context);
CGprogram cgGetNextProgram(CGprogram program);
CGcontext cgGetProgramContext(CGprogram program);
CGbool cgIsProgram(CGprogram program);

// Programs are compiled when they are made; this compiles once more. Parameters that are still there keep
// their handles, their values and what they are connected to.
void cgCompileProgram(CGprogram program);
CGbool cgIsProgramCompiled(CGprogram program);
// CG_PROGRAM_SOURCE, CG_PROGRAM_ENTRY, CG_PROGRAM_PROFILE, CG_COMPILED_PROGRAM: GLSL, behind lines that list
// its variables, "//var type name : semantic : resource : place : used". There is no assembly: of a program
// whose profile's text would be that, CG_COMPILED_PROGRAM is an error, and a line that says so.
const char* cgGetProgramString(CGprogram program, CGenum name);
CGprofile cgGetProgramProfile(CGprogram program);
void cgSetProgramProfile(CGprogram program, CGprofile profile);
const char* const* cgGetProgramOptions(CGprogram program); // up to a null; null: none
CGenum cgGetProgramInput(CGprogram program);               // CG_VERTEX or CG_FRAGMENT
CGenum cgGetProgramOutput(CGprogram program);

// One program of several stages, made of copies of those given.
CGprogram cgCombinePrograms(int count, const CGprogram* programs);
CGprogram cgCombinePrograms2(CGprogram first, CGprogram second);
CGprogram cgCombinePrograms3(CGprogram first, CGprogram second, CGprogram third);
CGprogram cgCombinePrograms4(CGprogram first, CGprogram second, CGprogram third, CGprogram fourth);
CGprogram cgCombinePrograms5(CGprogram first, CGprogram second, CGprogram third, CGprogram fourth,
                             CGprogram fifth);
int cgGetNumProgramDomains(CGprogram program); // 1 for one that isn't combined
CGprofile cgGetProgramDomainProfile(CGprogram program, int index);
CGprogram cgGetProgramDomainProgram(CGprogram program, int index);
CGdomain cgGetProfileDomain(CGprofile profile);

// Profiles that programs are compiled for.
int cgGetNumSupportedProfiles(void);
CGprofile cgGetSupportedProfile(int index);
CGbool cgIsProfileSupported(CGprofile profile);
CGbool cgGetProfileProperty(CGprofile profile, CGenum query); // CG_IS_..._PROFILE

// Parameters, in the order in which they are declared: those of the entry (CG_PROGRAM) and the globals that
// the program reaches (CG_GLOBAL). A struct has members, an array elements; a leaf has neither. Null at the
// end.
CGparameter cgGetNamedParameter(CGprogram program, const char* name);
CGparameter cgGetNamedProgramParameter(CGprogram program, CGenum nameSpace, const char* name);
CGparameter cgGetNamedStructParameter(CGparameter parameter, const char* member);
CGparameter cgGetNamedSubParameter(CGparameter parameter, const char* name); // "color", "[2].color"
CGparameter cgGetFirstParameter(CGprogram program, CGenum nameSpace);
CGparameter cgGetNextParameter(CGparameter parameter);
CGparameter cgGetFirstLeafParameter(CGprogram program, CGenum nameSpace);
CGparameter cgGetNextLeafParameter(CGparameter parameter);
CGparameter cgGetFirstStructParameter(CGparameter parameter);
CGparameter cgGetFirstDependentParameter(CGparameter parameter);
CGparameter cgGetArrayParameter(CGparameter parameter, int index);
int cgGetArrayDimension(CGparameter parameter);
int cgGetArraySize(CGparameter parameter, int dimension);
int cgGetArrayTotalSize(CGparameter parameter); // of all dimensions together
CGtype cgGetArrayType(CGparameter parameter);   // of the innermost elements
CGprogram cgGetParameterProgram(CGparameter parameter);
CGcontext cgGetParameterContext(CGparameter parameter);
CGbool cgIsParameter(CGparameter parameter);
const char* cgGetParameterName(CGparameter parameter); // with its owners: "lights[1].color"
CGtype cgGetParameterType(CGparameter parameter);
CGtype cgGetParameterBaseType(CGparameter parameter);  // the scalar of what has numbers, also of arrays
CGtype cgGetParameterNamedType(CGparameter parameter); // structs have no types of their own: CG_STRUCT
CGparameterclass cgGetParameterClass(CGparameter parameter);
int cgGetParameterRows(CGparameter parameter); // of arrays the elements'; 0: no numbers
int cgGetParameterColumns(CGparameter parameter);
const char* cgGetParameterSemantic(CGparameter parameter);
// Of those that cgCreateParameter made.
void cgSetParameterSemantic(CGparameter parameter, const char* semantic);
CGresource cgGetParameterResource(CGparameter parameter);
CGresource cgGetParameterBaseResource(CGparameter parameter); // the first of its row
unsigned long cgGetParameterResourceIndex(CGparameter parameter);
// A uniform's name in GLSL; of others the resource's.
const char* cgGetParameterResourceName(CGparameter parameter);
CGenum cgGetParameterVariability(CGparameter parameter);
// Of a program's uniform: CG_LITERAL makes its value a constant of the program, CG_UNIFORM and CG_DEFAULT a
// uniform again. The program has to be compiled once more.
void cgSetParameterVariability(CGparameter parameter, CGenum variability);
CGenum cgGetParameterDirection(CGparameter parameter);
int cgGetParameterIndex(CGparameter parameter); // among the elements of its array; -1: it is none
int cgGetParameterOrdinalNumber(CGparameter parameter);
CGbool cgIsParameterGlobal(CGparameter parameter);
CGbool cgIsParameterReferenced(CGparameter parameter);
CGbool cgIsParameterUsed(CGparameter parameter, CGhandle program);

// Parameters of a context's, and what is connected to them: whatever they are set to goes to all that they
// are the source of.
CGparameter cgCreateParameter(CGcontext context, CGtype type);
CGparameter cgCreateParameterArray(CGcontext context, CGtype type, int length);
CGparameter cgCreateParameterMultiDimArray(CGcontext context, CGtype type, int dimensions,
                                           const int* lengths);
void cgDestroyParameter(CGparameter parameter);
void cgConnectParameter(CGparameter from, CGparameter to);
void cgDisconnectParameter(CGparameter to);
CGparameter cgGetConnectedParameter(CGparameter to);
int cgGetNumConnectedToParameters(CGparameter from);
CGparameter cgGetConnectedToParameter(CGparameter from, int index);

// Numbers of a scalar or vector. Too many are cut; of too few the last stands for those that are missing. A
// varying parameter becomes GL's current attribute.
void cgSetParameter1f(CGparameter parameter, float x);
void cgSetParameter2f(CGparameter parameter, float x, float y);
void cgSetParameter3f(CGparameter parameter, float x, float y, float z);
void cgSetParameter4f(CGparameter parameter, float x, float y, float z, float w);
void cgSetParameter1d(CGparameter parameter, double x);
void cgSetParameter2d(CGparameter parameter, double x, double y);
void cgSetParameter3d(CGparameter parameter, double x, double y, double z);
void cgSetParameter4d(CGparameter parameter, double x, double y, double z, double w);
void cgSetParameter1i(CGparameter parameter, int x);
void cgSetParameter2i(CGparameter parameter, int x, int y);
void cgSetParameter3i(CGparameter parameter, int x, int y, int z);
void cgSetParameter4i(CGparameter parameter, int x, int y, int z, int w);
void cgSetParameter1fv(CGparameter parameter, const float* v);
void cgSetParameter2fv(CGparameter parameter, const float* v);
void cgSetParameter3fv(CGparameter parameter, const float* v);
void cgSetParameter4fv(CGparameter parameter, const float* v);
void cgSetParameter1dv(CGparameter parameter, const double* v);
void cgSetParameter2dv(CGparameter parameter, const double* v);
void cgSetParameter3dv(CGparameter parameter, const double* v);
void cgSetParameter4dv(CGparameter parameter, const double* v);
void cgSetParameter1iv(CGparameter parameter, const int* v);
void cgSetParameter2iv(CGparameter parameter, const int* v);
void cgSetParameter3iv(CGparameter parameter, const int* v);
void cgSetParameter4iv(CGparameter parameter, const int* v);

// Matrices row by row (r) or column by column (c).
void cgSetMatrixParameterfr(CGparameter parameter, const float* matrix);
void cgSetMatrixParameterfc(CGparameter parameter, const float* matrix);
void cgSetMatrixParameterdr(CGparameter parameter, const double* matrix);
void cgSetMatrixParameterdc(CGparameter parameter, const double* matrix);
void cgSetMatrixParameterir(CGparameter parameter, const int* matrix);
void cgSetMatrixParameteric(CGparameter parameter, const int* matrix);
void cgGetMatrixParameterfr(CGparameter parameter, float* matrix);
void cgGetMatrixParameterfc(CGparameter parameter, float* matrix);
void cgGetMatrixParameterdr(CGparameter parameter, double* matrix);
void cgGetMatrixParameterdc(CGparameter parameter, double* matrix);
void cgGetMatrixParameterir(CGparameter parameter, int* matrix);
void cgGetMatrixParameteric(CGparameter parameter, int* matrix);
CGenum cgGetMatrixParameterOrder(CGparameter parameter); // CG_ROW_MAJOR

// All numbers of a parameter, also of an array or a struct. `count` is how many there is room for, no less
// than there are; what is got gives back how many that was.
void cgSetParameterValuefr(CGparameter parameter, int count, const float* values);
void cgSetParameterValuefc(CGparameter parameter, int count, const float* values);
void cgSetParameterValuedr(CGparameter parameter, int count, const double* values);
void cgSetParameterValuedc(CGparameter parameter, int count, const double* values);
void cgSetParameterValueir(CGparameter parameter, int count, const int* values);
void cgSetParameterValueic(CGparameter parameter, int count, const int* values);
int cgGetParameterValuefr(CGparameter parameter, int count, float* values);
int cgGetParameterValuefc(CGparameter parameter, int count, float* values);
int cgGetParameterValuedr(CGparameter parameter, int count, double* values);
int cgGetParameterValuedc(CGparameter parameter, int count, double* values);
int cgGetParameterValueir(CGparameter parameter, int count, int* values);
int cgGetParameterValueic(CGparameter parameter, int count, int* values);
int cgGetParameterDefaultValuefr(CGparameter parameter, int count, float* values);
int cgGetParameterDefaultValuefc(CGparameter parameter, int count, float* values);
int cgGetParameterDefaultValuedr(CGparameter parameter, int count, double* values);
int cgGetParameterDefaultValuedc(CGparameter parameter, int count, double* values);
int cgGetParameterDefaultValueir(CGparameter parameter, int count, int* values);
int cgGetParameterDefaultValueic(CGparameter parameter, int count, int* values);
// The numbers that it has (CG_CURRENT, also CG_CONSTANT of a literal) or that the program's text gives it
// (CG_DEFAULT), row by row; null: none.
const double* cgGetParameterValues(CGparameter parameter, CGenum valueType, int* count);

// Bytes that programs share. A uniform of the semantic BUFFER[1] is read from the buffer at place 1, when its
// program is bound or cgUpdateProgramParameters is called; from byte 16 on where it is BUFFER[1][16], else
// behind the one before, as OpenGL lays out uniform blocks (std140).
CGbuffer cgCreateBuffer(CGcontext context, int size, const void* data, CGbufferusage usage);
void cgDestroyBuffer(CGbuffer buffer);
CGbool cgIsBuffer(CGbuffer buffer);
CGcontext cgGetBufferContext(CGbuffer buffer);
int cgGetBufferSize(CGbuffer buffer);
void cgSetBufferData(CGbuffer buffer, int size, const void* data);
void cgSetBufferSubData(CGbuffer buffer, int offset, int size, const void* data);
void* cgMapBuffer(CGbuffer buffer, CGbufferaccess access);
void cgUnmapBuffer(CGbuffer buffer);
void cgSetProgramBuffer(CGprogram program, int index, CGbuffer buffer);
CGbuffer cgGetProgramBuffer(CGprogram program, int index);
int cgGetProgramBufferMaxIndex(CGprofile profile);
int cgGetProgramBufferMaxSize(CGprofile profile);
int cgGetParameterBufferIndex(CGparameter parameter); // -1: it is read from none
int cgGetParameterBufferOffset(CGparameter parameter);

// Effects: files of parameters, techniques, passes and states, to be walked through. Null at the end.
CGeffect cgCreateEffect(CGcontext context, const char* source, const char** args);
CGeffect cgCreateEffectFromFile(CGcontext context, const char* fileName, const char** args);
void cgDestroyEffect(CGeffect effect); // and the programs of its passes
CGbool cgIsEffect(CGeffect effect);
CGcontext cgGetEffectContext(CGeffect effect);
CGeffect cgGetFirstEffect(CGcontext context);
CGeffect cgGetNextEffect(CGeffect effect);
CGbool cgSetEffectName(CGeffect effect, const char* name);
const char* cgGetEffectName(CGeffect effect);
// A program whose globals follow the effect's parameters of the same names.
CGprogram cgCreateProgramFromEffect(CGeffect effect, CGprofile profile, const char* entry, const char** args);

// Its uniforms, textures and strings, but for structs that hold textures or strings.
CGparameter cgGetFirstEffectParameter(CGeffect effect);
CGparameter cgGetNamedEffectParameter(CGeffect effect, const char* name);
CGparameter cgGetEffectParameterBySemantic(CGeffect effect, const char* semantic);
CGeffect cgGetParameterEffect(CGparameter parameter); // null: it is none of an effect's
const char* cgGetStringParameterValue(CGparameter parameter);
void cgSetStringParameterValue(CGparameter parameter, const char* value);

CGtechnique cgGetFirstTechnique(CGeffect effect);
CGtechnique cgGetNextTechnique(CGtechnique technique);
CGtechnique cgGetNamedTechnique(CGeffect effect, const char* name);
CGbool cgIsTechnique(CGtechnique technique);
const char* cgGetTechniqueName(CGtechnique technique);
CGeffect cgGetTechniqueEffect(CGtechnique technique);

CGpass cgGetFirstPass(CGtechnique technique);
CGpass cgGetNextPass(CGpass pass);
CGpass cgGetNamedPass(CGtechnique technique, const char* name);
CGbool cgIsPass(CGpass pass);
const char* cgGetPassName(CGpass pass);
CGtechnique cgGetPassTechnique(CGpass pass);

// The states that a pass sets. A name of the effect's, a constant or a parameter as it is now, has its
// numbers, and is a string too. Names of states and of their constants are the same in small letters and
// capitals.
CGstateassignment cgGetFirstStateAssignment(CGpass pass);
CGstateassignment cgGetNextStateAssignment(CGstateassignment assignment);
CGstateassignment cgGetNamedStateAssignment(CGpass pass, const char* name);
CGbool cgIsStateAssignment(CGstateassignment assignment);
CGstate cgGetStateAssignmentState(CGstateassignment assignment);
CGpass cgGetStateAssignmentPass(CGstateassignment assignment);
CGstate cgGetFirstState(CGcontext context); // that effects of the context have named
CGstate cgGetNextState(CGstate state);
CGstate cgGetNamedState(CGcontext context, const char* name);
CGbool cgIsState(CGstate state);
const char* cgGetStateName(CGstate state);
CGcontext cgGetStateContext(CGstate state);
int cgGetStateAssignmentIndex(CGstateassignment assignment);
const float* cgGetFloatStateAssignmentValues(CGstateassignment assignment, int* count);
const int* cgGetIntStateAssignmentValues(CGstateassignment assignment, int* count);
const CGbool* cgGetBoolStateAssignmentValues(CGstateassignment assignment, int* count);
const char* cgGetStringStateAssignmentValue(CGstateassignment assignment);
// The program of "compile arbvp1 main(tint, 2)", compiled when this is called first; for OpenGL where it is
// for Direct3D. Null without an error: the value is NULL.
CGprogram cgGetProgramStateAssignmentValue(CGstateassignment assignment);

// The parameter that a value names.
CGparameter cgGetTextureStateAssignmentValue(CGstateassignment assignment);

// The states that a sampler is written with, "sampler_state { MinFilter = Linear; }".
CGstateassignment cgGetFirstSamplerStateAssignment(CGparameter sampler);
CGstateassignment cgGetNamedSamplerStateAssignment(CGparameter sampler, const char* name);
CGstate cgGetSamplerStateAssignmentState(CGstateassignment assignment);
CGparameter cgGetSamplerStateAssignmentParameter(CGstateassignment assignment);
void cgSetSamplerState(CGparameter sampler); // calls what sets each

// States of the caller's, by the names that effects use: what sets one, sets it back, and says whether its
// value can be. Nobody else knows any. Constants by name are numbers of its assignments then. One that is
// made once more, with the same type, is the one that there is.
CGstate cgCreateState(CGcontext context, const char* name, CGtype type);
CGstate cgCreateSamplerState(CGcontext context, const char* name, CGtype type);
CGtype cgGetStateType(CGstate state); // CG_UNKNOWN_TYPE: an effect names it, nobody made it
void cgSetStateCallbacks(CGstate state, CGstatecallback set, CGstatecallback reset, CGstatecallback validate);
CGstatecallback cgGetStateSetCallback(CGstate state);
CGstatecallback cgGetStateResetCallback(CGstate state);
CGstatecallback cgGetStateValidateCallback(CGstate state);
void cgAddStateEnumerant(CGstate state, const char* name, int value);
int cgGetStateEnumerantValue(CGstate state, const char* name); // -1: none
const char* cgGetStateEnumerantName(CGstate state, int value);
CGbool cgCallStateSetCallback(CGstateassignment assignment); // false: there is none
CGbool cgCallStateResetCallback(CGstateassignment assignment);
CGbool cgCallStateValidateCallback(CGstateassignment assignment);
// The callbacks of all states of a pass, in its order. A technique is valid where all of its states have one
// that says so.
void cgSetPassState(CGpass pass);
void cgResetPassState(CGpass pass);
CGbool cgValidateTechnique(CGtechnique technique);
CGbool cgIsTechniqueValidated(CGtechnique technique);

CGannotation cgGetFirstTechniqueAnnotation(CGtechnique technique);
CGannotation cgGetFirstPassAnnotation(CGpass pass);
CGannotation cgGetFirstParameterAnnotation(CGparameter parameter);
CGannotation cgGetNamedTechniqueAnnotation(CGtechnique technique, const char* name);
CGannotation cgGetNamedPassAnnotation(CGpass pass, const char* name);
CGannotation cgGetNamedParameterAnnotation(CGparameter parameter, const char* name);
CGannotation cgGetNextAnnotation(CGannotation annotation);
CGbool cgIsAnnotation(CGannotation annotation);
const char* cgGetAnnotationName(CGannotation annotation);
CGtype cgGetAnnotationType(CGannotation annotation);
const float* cgGetFloatAnnotationValues(CGannotation annotation, int* count);
const int* cgGetIntAnnotationValues(CGannotation annotation, int* count);
const CGbool* cgGetBoolAnnotationValues(CGannotation annotation, int* count);
const char* cgGetStringAnnotationValue(CGannotation annotation);

const char* cgGetTypeString(CGtype type);
CGtype cgGetType(const char* name);
CGtype cgGetTypeBase(CGtype type);
CGparameterclass cgGetTypeClass(CGtype type);
CGbool cgGetTypeSizes(CGtype type, int* rows, int* columns); // true: it is a matrix
const char* cgGetResourceString(CGresource resource);
CGresource cgGetResource(const char* name);
const char* cgGetProfileString(CGprofile profile);
CGprofile cgGetProfile(const char* name);
const char* cgGetParameterClassString(CGparameterclass parameterClass);
CGparameterclass cgGetParameterClassEnum(const char* name);
const char* cgGetDomainString(CGdomain domain);
CGdomain cgGetDomain(const char* name);
const char* cgGetEnumString(CGenum value);
CGenum cgGetEnum(const char* name);

// The first error since the last call of this. A callback is called for each, and a handler, which is told
// the context, if one is known, and the error.
CGerror cgGetError(void);
CGerror cgGetFirstError(void);
const char* cgGetErrorString(CGerror error);
const char* cgGetLastErrorString(CGerror* error); // null: there is none
void cgSetErrorCallback(CGerrorCallbackFunc callback);
CGerrorCallbackFunc cgGetErrorCallback(void);
void cgSetErrorHandler(CGerrorHandlerFunc handler, void* data);
CGerrorHandlerFunc cgGetErrorHandler(void** data);

#ifdef __cplusplus
}
#endif
