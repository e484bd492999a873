#include <orlohost.h>

int main() {
    const PixelArray2D pixels(koSysPixelFormat(kRasterRGBA8, 4), 4, 3);
    return pixels.width() == 4 && pixels.height() == 3 ? 0 : 1;
}
