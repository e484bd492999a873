#pragma once

#include "language/CompiledProgram.h"
#include "language/Constants.h"
#include "language/Semantics.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace orlocg {

/// Writes a checked program as GLSL.
///
/// Matrices are kept with their rows as GLSL's columns: rows are then what an index picks, flat lists of
/// numbers stand in the same order, and mul(a, b) is b * a. Samplers, which GLSL lets nobody copy, are bound
/// when it is written: a function that takes some is written once for each set that it is called with.
/// Functions come out in the order in which they are called, and only those.
class GlslWriter {
public:
    GlslWriter(const CompileOptions& options, Diagnostics& diagnostics, CompiledProgram& out);

    void write(Function& entry);

private:
    /// Where the samplers of a variable are: by the path below it ("" or ".map"), a path of a parameter.
    using Bindings = std::map<std::string, std::string>;

    struct Body {
        std::map<const Variable*, Bindings> bindings;
        std::string temporaries;
        int indent = 1;
    };

    /// What comes into the program or goes out of it: a parameter, a result, or a member of one.
    struct End {
        static constexpr size_t kResult = SIZE_MAX;

        const Type* type;
        std::string semantic;
        std::string glsl;
        Location at;
        std::string path;
        size_t parameter = kResult; ///< its number
        bool isRow = false;         ///< of a matrix, whose leaf is the whole
        bool isPosition = false;    ///< without saying so

        bool isReturn() const { return parameter == kResult; }
        /// A part of it.
        End part(const Type* of, const std::string& below, const std::string& itsGlsl) const {
            return {of, semantic, itsGlsl, at, path + below, parameter};
        }
    };

    /// How many branches stand in each other: a driver draws wrong where there are more than 80.
    static constexpr size_t kDeepestBranches = 32;

    // Names and types.
    std::string uniqueName(const std::string& wanted);
    const std::string& nameOf(const Variable& variable);
    std::string memberName(const std::string& name) const;
    std::string typeName(const Type* type);
    std::string declaration(const Type* type, const std::string& name);
    const std::string& structName(const StructType& structure);
    std::string temporary(const Type* type);
    std::string helper(const std::string& name, const std::string& type);

    // Statements.
    std::string keyOf(const void* what, const std::vector<Bindings>& bindings) const;
    void addFunction(const std::string& head, const Body& body, const std::string& text, const Location& at);
    const std::string& functionName(Function& function, const std::vector<Bindings>& bindings);
    void statement(const Statement& s, std::string& out);
    void forLoop(const Statement& s, std::string& out);
    void branches(const Statement& s, std::string& out);
    void block(const std::string& head, const Statement& inner, std::string& out,
               const std::string& tail = {}, const std::string& first = {});
    void body(const Statement& s, std::string& out);
    void declare(const Variable& variable, std::string& out);
    void bindSamplers(const Variable& variable, const Expression& from);
    const Bindings* findBindings(const Variable& variable) const;
    void line(std::string& out, const std::string& text) const;

    // Expressions.
    std::string write(const Expression& e);
    std::string writeNumber(double number, const Type* type) const;
    std::string convert(const std::string& text, const Type* from, const Type* to);
    std::string zero(const Type* type);
    std::string writeChoice(const Expression& e);
    std::string writeFlatChoice(const Expression& e);
    std::string writeUnary(const Expression& e);
    std::string writeBinary(const Expression& e);
    std::string combine(std::string_view op, const std::string& a, const std::string& b, const Type* type);
    std::string writeAssignment(const Expression& e);
    std::string assign(const Expression& to, const std::string& value, const Type* type);
    std::string writeSwizzle(const Expression& e);
    std::string element(const std::string& matrix, const Type* type, unsigned pick) const;
    std::string writeIndex(const Expression& e);
    std::string writeConstruct(const Expression& e);
    void flatten(const Expression& e, std::vector<std::string>& parts);
    std::string writeDefault(const Function& function, const Variable& parameter);
    std::string writeUserCall(const Expression& e);
    std::string writeLibraryCall(const Expression& e);
    std::string writeTexture(const Expression& e);
    std::string readTexture(const Expression& e, const std::vector<std::string>& arguments);
    std::string samplerText(const Expression& e);
    std::optional<int> knownIndex(const Expression& element);
    bool picksSampler(const std::vector<const Expression*>& samplers);
    std::string choose(const std::vector<const Expression*>& samplers,
                       const std::function<std::string()>& writeOne);
    std::string pathOf(const Expression& e);
    std::string bound(const Variable& variable, const std::string& below);
    Bindings bindingsOf(const Expression& e, const Type* type);

    // The program's ends.
    void addParameter(const Variable& variable);
    std::string stateFor(const std::string& semantic, const Type* wanted, const Location& at);
    void addLeaves(const Member& of, const std::string& path, const std::string& glsl, Parameter& parameter);
    std::string addUniform(const Member& of, const std::string& path, Parameter& parameter);
    void addMixed(const End& end, std::string& out);
    void addInitial(const Variable& variable, Parameter& parameter);
    void mainFunction(Function& entry);
    std::string variableList() const;
    std::string entryArguments(Function& entry, std::vector<Bindings>& bindings, std::string& out);
    void addGlobals(std::string& out);
    void addVarying(const Variable& variable, const std::string& glsl, std::string& out);
    std::vector<VaryingLeaf>& leavesOf(const End& end);
    void addEnds(const End& end, bool isOutput);
    void addElements(const End& end, bool isOutput);
    void moveEnds(bool isOutput, std::string& out);
    void varyings(const End& end, const Semantic& semantic, bool isOutput, std::string& out);
    void reserve(const End& end, bool isOutput);
    void choosePosition(const Function& entry);
    Semantic slotFor(const End& end, bool isOutput);

    const CompileOptions& fOptions;
    Diagnostics& fDiagnostics;
    CompiledProgram& fOut;

    Constants fConstants;
    std::set<std::string> fTaken;
    std::map<const Variable*, std::string> fNames;
    std::map<const StructType*, std::string> fStructs;
    std::map<std::string, std::string> fInstances;       ///< of functions with their samplers
    std::map<std::string, std::string> fSamplers;        ///< GLSL names by path
    std::map<const Variable*, Bindings> fGlobalBindings; ///< of globals that samplers were kept in
    std::map<const Expression*, int> fChosen; ///< of elements that an index picks, while one is written
    uint32_t fChoices = 1;                    ///< how often what is written now is
    std::set<std::string> fShadowSamplers;
    std::set<int> fUsedTexCoords[2]; ///< of inputs and outputs
    std::set<int> fUsedAttributes;   ///< of inputs
    int fVaryings[2] = {};           ///< that found no texture coordinate
    std::set<std::string> fDeclaredVaryings;
    std::string fUniforms, fStructTexts, fHelperTexts, fGlobalTexts, fFunctionTexts;
    std::set<std::pair<std::string, std::string>> fHelpers;
    std::vector<const Variable*> fGlobalsToSet; ///< in the order of their first use
    std::map<const Variable*, std::string> fGlobalValues;
    std::vector<End> fEnds[2]; ///< inputs and outputs
    std::set<std::string> fExtensions;
    int fTemporaries = 0;
    size_t fLength = 0; ///< of what was written, to bound it
    Body* fBody = nullptr;
};

} // namespace orlocg
