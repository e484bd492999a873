#pragma once

// The interface of the Cg core runtime, libCg.so, as far as hosts of ours use it. Plain C.
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

#ifdef __cplusplus
extern "C" {
#endif

typedef int CGbool;
#define CG_FALSE 0
#define CG_TRUE 1

typedef struct CGcontextTag* CGcontext;
typedef struct CGprogramTag* CGprogram;
typedef struct CGparameterTag* CGparameter;
typedef void (*CGerrorCallbackFunc)(void);

typedef enum {
    CG_UNKNOWN = 4096,
    CG_IN,
    CG_OUT,
    CG_INOUT,
    CG_MIXED,
    CG_VARYING,
    CG_UNIFORM,
    CG_CONSTANT,
    CG_PROGRAM_SOURCE,
    CG_PROGRAM_ENTRY,
    CG_COMPILED_PROGRAM,
    CG_PROGRAM_PROFILE,
    CG_GLOBAL,
    CG_PROGRAM,
    CG_DEFAULT,
    CG_ERROR,
    CG_SOURCE,
    CG_OBJECT
} CGenum;

// A kind of numbers has twenty types: the scalar, its vectors of 2 to 4, its matrices by rows and columns
// from 1x1 to 4x4. Vectors of one come behind them.
typedef enum {
    CG_UNKNOWN_TYPE = 0,
    CG_STRUCT = 1,
    CG_ARRAY = 2,
    CG_HALF = 1025,
    CG_HALF2,
    CG_HALF3,
    CG_HALF4,
    CG_FLOAT = 1045,
    CG_FLOAT2,
    CG_FLOAT3,
    CG_FLOAT4,
    CG_FLOAT1x1,
    CG_FLOAT2x2 = CG_FLOAT1x1 + 5,
    CG_FLOAT3x3 = CG_FLOAT1x1 + 10,
    CG_FLOAT4x4 = CG_FLOAT1x1 + 15,
    CG_SAMPLER1D = 1065,
    CG_SAMPLER2D,
    CG_SAMPLER3D,
    CG_SAMPLERRECT,
    CG_SAMPLERCUBE,
    CG_FIXED = 1070,
    CG_FIXED2,
    CG_FIXED3,
    CG_FIXED4,
    CG_HALF1 = 1090,
    CG_FLOAT1,
    CG_FIXED1,
    CG_INT = 1093,
    CG_INT2,
    CG_INT3,
    CG_INT4,
    CG_INT1 = 1113,
    CG_BOOL = 1114,
    CG_BOOL2,
    CG_BOOL3,
    CG_BOOL4,
    CG_BOOL1 = 1134
} CGtype;

// Where a parameter's value comes from or goes to. Those with a number behind them come in rows.
typedef enum {
    CG_TEXUNIT0 = 2048, // to CG_TEXUNIT0 + 15
    CG_ATTR0 = 2113,    // to + 15
    CG_C = 2178,        // a constant register of the program
    CG_TEX0 = 2179,     // varying texture coordinates, to + 7
    CG_HPOS = 2243,     // position of a vertex program
    CG_COL0 = 2245,     // to + 3
    CG_PSIZ = 2309,
    CG_WPOS = 2373, // position of a fragment program
    CG_POSITION0 = 2437,
    CG_COLOR0 = 2565, // of vertices, to + 1
    CG_NORMAL0 = 2756,
    CG_TEXCOORD0 = 2821, // of vertices, to + 7
    CG_FOGCOORD = 3202,
    CG_DEPTH0 = 3250,
    CG_UNDEFINED = 3256
} CGresource;

typedef enum {
    CG_PROFILE_UNKNOWN = 6145,
    CG_PROFILE_VP30 = 6148,
    CG_PROFILE_FP30 = 6149,
    CG_PROFILE_ARBVP1 = 6150,
    CG_PROFILE_FP40 = 6151,
    CG_PROFILE_ARBFP1 = 7000,
    CG_PROFILE_VP40 = 7001,
    CG_PROFILE_GLSLV = 7007,
    CG_PROFILE_GLSLF = 7008
} CGprofile;

typedef enum {
    CG_NO_ERROR = 0,
    CG_COMPILER_ERROR,
    CG_INVALID_PARAMETER_ERROR,
    CG_INVALID_PROFILE_ERROR,
    CG_PROGRAM_LOAD_ERROR,
    CG_PROGRAM_BIND_ERROR,
    CG_PROGRAM_NOT_LOADED_ERROR,
    CG_UNSUPPORTED_GL_EXTENSION_ERROR,
    CG_INVALID_VALUE_TYPE_ERROR,
    CG_NOT_MATRIX_PARAM_ERROR,
    CG_INVALID_ENUMERANT_ERROR,
    CG_NOT_4x4_MATRIX_ERROR,
    CG_FILE_READ_ERROR,
    CG_FILE_WRITE_ERROR,
    CG_MEMORY_ALLOC_ERROR = 15,
    CG_INVALID_CONTEXT_HANDLE_ERROR,
    CG_INVALID_PROGRAM_HANDLE_ERROR,
    CG_INVALID_PARAM_HANDLE_ERROR,
    CG_UNKNOWN_PROFILE_ERROR,
    CG_INVALID_DIMENSION_ERROR = 21,
    CG_ARRAY_PARAM_ERROR,
    CG_OUT_OF_ARRAY_BOUNDS_ERROR
} CGerror;

// Contexts own programs, programs own parameters; what is owned goes with its owner.
CGcontext cgCreateContext(void);
void cgDestroyContext(CGcontext context);
CGbool cgIsContext(CGcontext context);

// What the compiler had to say last, errors and warnings, a line each; null: nothing yet.
const char* cgGetLastListing(CGcontext context);

// Compiles a program. Null with CG_COMPILER_ERROR where it has an error, and the listing says which. `args`:
// null, or switches up to a null: "-Ifolder", "-DNAME=VALUE", "-posinv"; others are passed over.
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

// Programs are compiled when they are made; this compiles once more.
void cgCompileProgram(CGprogram program);
CGbool cgIsProgramCompiled(CGprogram program);
// CG_PROGRAM_SOURCE, CG_PROGRAM_ENTRY, CG_PROGRAM_PROFILE, CG_COMPILED_PROGRAM (GLSL).
const char* cgGetProgramString(CGprogram program, CGenum name);
CGprofile cgGetProgramProfile(CGprogram program);

// Parameters, in the order in which they are declared: those of the entry (CG_PROGRAM) and the globals that
// the program reaches (CG_GLOBAL). A struct has members, an array elements; a leaf has neither. Null at the
// end.
CGparameter cgGetNamedParameter(CGprogram program, const char* name);
CGparameter cgGetFirstParameter(CGprogram program, CGenum nameSpace);
CGparameter cgGetNextParameter(CGparameter parameter);
CGparameter cgGetFirstLeafParameter(CGprogram program, CGenum nameSpace);
CGparameter cgGetNextLeafParameter(CGparameter parameter);
CGparameter cgGetFirstStructParameter(CGparameter parameter);
CGparameter cgGetFirstDependentParameter(CGparameter parameter);
CGparameter cgGetArrayParameter(CGparameter parameter, int index);
int cgGetArrayDimension(CGparameter parameter);
int cgGetArraySize(CGparameter parameter, int dimension);
CGprogram cgGetParameterProgram(CGparameter parameter);
CGbool cgIsParameter(CGparameter parameter);
const char* cgGetParameterName(CGparameter parameter); // with its owners: "lights[1].color"
CGtype cgGetParameterType(CGparameter parameter);
const char* cgGetParameterSemantic(CGparameter parameter);
CGresource cgGetParameterResource(CGparameter parameter);
CGresource cgGetParameterBaseResource(CGparameter parameter); // the first of its row
unsigned long cgGetParameterResourceIndex(CGparameter parameter);
CGenum cgGetParameterVariability(CGparameter parameter);
CGenum cgGetParameterDirection(CGparameter parameter);
CGbool cgIsParameterReferenced(CGparameter parameter);
// The numbers that the program's text gives it (CG_DEFAULT), row by row.
const double* cgGetParameterValues(CGparameter parameter, CGenum valueType, int* count);

const char* cgGetTypeString(CGtype type);
CGtype cgGetType(const char* name);
const char* cgGetResourceString(CGresource resource);
CGresource cgGetResource(const char* name);
const char* cgGetProfileString(CGprofile profile);
CGprofile cgGetProfile(const char* name);

// The first error since the last call of this. A callback is called for each.
CGerror cgGetError(void);
const char* cgGetErrorString(CGerror error);
void cgSetErrorCallback(CGerrorCallbackFunc callback);
CGerrorCallbackFunc cgGetErrorCallback(void);

#ifdef __cplusplus
}
#endif
