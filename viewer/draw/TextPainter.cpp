#include "draw/TextPainter.h"

#include <gl/GLFunctionTable.h>

namespace orloview {

namespace {

/// What is drawn once and then changed isn't worth a buffer object: its arrays stay in memory.
class WithoutBufferObjects {
public:
    WithoutBufferObjects() { GLRouting::fsUseObjectsForData = GLRouting::fsUseObjectsForIndexing = false; }
    WithoutBufferObjects(const WithoutBufferObjects&) = delete;
    WithoutBufferObjects& operator=(const WithoutBufferObjects&) = delete;
    ~WithoutBufferObjects() {
        GLRouting::fsUseObjectsForData = fForData;
        GLRouting::fsUseObjectsForIndexing = fForIndexing;
    }

private:
    bool fForData = GLRouting::fsUseObjectsForData;
    bool fForIndexing = GLRouting::fsUseObjectsForIndexing;
};

void setStream(GeometryLogicalGroup& group, size_t stream, const std::vector<float>& values) {
    GeometryData& data = *group.stream(stream);
    data.fData = values.data();
    data.fElementCount = static_cast<uint32_t>(values.size() / data.fComponentsPerElement);
}

} // namespace

TextPainter::TextPainter() {
    const struct {
        GLRouting::GLInterpolant interpolant;
        GeometryData::DataType type;
        uint32_t components;
    } streams[] = {{GLRouting::kPosition, GeometryData::kPosition, 2},
                   {GLRouting::kTexCoord0, GeometryData::kTexCoord, 2},
                   {GLRouting::kColor, GeometryData::kColor, 4}};
    for (const auto& stream : streams) {
        fGroup.addStream(std::make_unique<GeometryData>(stream.type, stream.components, nullptr, 0));
        fRouting.fSlots[stream.interpolant] = {GLRouting::kFromGeometry, {}, stream.type, 0};
    }
    fGroup.addIndexRecord(std::make_unique<GeometryDataIndex>(GeometryDataIndex::kQuads, nullptr, 0));
    fTexture = new GLTexture2D(kRasterAlpha8, false);
    fTexture->ref();
}

TextPainter::~TextPainter() {
    fTexture->unref();
}

void TextPainter::setLineHeight(int pixels) {
    fPositions.clear();
    fTexCoords.clear();
    fColors.clear();
    if (pixels == fFont.cellHeight)
        return;
    fFont = loadFont(pixels);
    if (fFont.empty())
        return;
    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    fTexture->bind();
    gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    fTexture->GLloadImage(fFont.coverage.data(), static_cast<unsigned>(fFont.width),
                          static_cast<unsigned>(fFont.height));
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
}

void TextPainter::addPanel(int x, int y, int width, int height, const koColor::Color& color) {
    addQuad(x, y, width, height, Font::kSolidCell, color);
}

void TextPainter::addText(int x, int y, std::string_view text, const koColor::Color& color) {
    for (const char character : text) {
        if (character != ' ')
            addQuad(x, y, fFont.cellWidth, fFont.cellHeight, Font::cellOf(character), color);
        x += fFont.cellWidth;
    }
}

void TextPainter::addQuad(int x, int y, int width, int height, int cell, const koColor::Color& color) {
    if (fFont.empty())
        return;
    const int left = cell % Font::kColumns * fFont.cellWidth;
    const int top = cell / Font::kColumns * fFont.cellHeight;
    for (const auto& [right, down] : {std::pair{0, 0}, {0, 1}, {1, 1}, {1, 0}}) {
        fPositions.push_back(static_cast<float>(x + right * width));
        fPositions.push_back(static_cast<float>(y + down * height));
        fTexCoords.push_back(static_cast<float>(left + right * fFont.cellWidth) /
                             static_cast<float>(fFont.width));
        fTexCoords.push_back(static_cast<float>(top + down * fFont.cellHeight) /
                             static_cast<float>(fFont.height));
        fColors.insert(fColors.end(), color.data(), color.data() + 4);
    }
}

void TextPainter::paint(int targetWidth, int targetHeight) {
    if (fPositions.empty())
        return;
    const auto corners = static_cast<uint32_t>(fPositions.size() / 2);
    while (fIndices.size() < corners)
        fIndices.push_back(static_cast<uint32_t>(fIndices.size()));
    setStream(fGroup, 0, fPositions);
    setStream(fGroup, 1, fTexCoords);
    setStream(fGroup, 2, fColors);
    GeometryDataIndex& record = *fGroup.indexRecord(0);
    record.fIndices = fIndices.data();
    record.fIndexCount = record.fAllocatedCount = corners;

    const GLFunctionTable* gl = GLFunctionTable::fpGlobalFunctionTable;
    gl->glMatrixMode(GL_PROJECTION);
    gl->glLoadIdentity();
    gl->glOrtho(0.0, targetWidth, targetHeight, 0.0, -1.0, 1.0);
    gl->glMatrixMode(GL_MODELVIEW);
    gl->glLoadIdentity();
    gl->glEnable(GL_BLEND);
    gl->glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    gl->glEnable(GL_TEXTURE_2D);
    fTexture->bind();
    {
        const WithoutBufferObjects inMemory;
        fRouting.drawGroup(&fGroup, nullptr, nullptr, nullptr, 0, false);
    }
    gl->glDisable(GL_TEXTURE_2D);
    gl->glDisable(GL_BLEND);
    fPositions.clear();
    fTexCoords.clear();
    fColors.clear();
}

} // namespace orloview
