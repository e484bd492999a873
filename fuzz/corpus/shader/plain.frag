uniform sampler2D picture;
void main() {
    gl_FragColor = texture2D(picture, gl_TexCoord[0].st) * gl_Color;
}
