#include "TestFiles.h"

#include "import/AssimpReader.h"

namespace orloview {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

std::string facet(const std::string& normal, const std::string& third) {
    return "facet normal " + normal + "\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex " + third +
           "\nendloop\nendfacet\n";
}

TEST(StlReader, makesFlatNormalsWhateverTheFileSays) {
    for (const char* normal : {"0 0 1", "0 0 0", "0 0 -1", "nan nan nan"}) {
        const Scene scene = readStl(bytesOf("solid s\n" + facet(normal, "0 1 0") + "endsolid s\n"));
        ASSERT_THAT(scene.meshes, SizeIs(1)) << normal;
        EXPECT_THAT(scene.meshes[0].normals, ElementsAre(0, 0, 1, 0, 0, 1, 0, 0, 1)) << normal;
        EXPECT_TRUE(scene.meshes[0].bothSides);
    }
}

TEST(StlReader, leavesOutFacetsThatAreNotFinite) {
    const Scene scene =
        readStl(bytesOf("solid s\n" + facet("0 0 1", "0 1 0") + facet("0 0 1", "0 inf 0") + "endsolid s\n"));
    EXPECT_EQ(scene.count(Topology::Triangles), 1U);
    EXPECT_THAT(scene.warnings, ElementsAre(HasSubstr("1 triangle of")));
}

Scene read(const Folder& folder, const Bytes& bytes) {
    const std::filesystem::path path = folder.write("model.dae", bytes);
    return readByLibrary(path, ModelFolder(path));
}

const char* const kCollada = R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><unit name="meter" meter="1"/><up_axis>Y_UP</up_axis></asset>
<library_cameras><camera id="c" name="eye"><optics><technique_common><perspective>
 <xfov>90</xfov><aspect_ratio>2</aspect_ratio><znear>0.5</znear><zfar>50</zfar>
</perspective></technique_common></optics></camera></library_cameras>
<library_effects><effect id="e"><profile_COMMON><technique sid="t"><lambert>
 <diffuse><color>0.25 0.5 0.75 1</color></diffuse></lambert></technique></profile_COMMON></effect></library_effects>
<library_materials><material id="m" name="paint"><instance_effect url="#e"/></material></library_materials>
<library_geometries><geometry id="g" name="quad"><mesh>
 <source id="p"><float_array id="pa" count="12">0 0 0 1 0 0 1 1 0 0 1 0</float_array><technique_common>
  <accessor source="#pa" count="4" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
  <param name="Z" type="float"/></accessor></technique_common></source>
 <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
 <polylist material="m" count="1"><input semantic="VERTEX" source="#v" offset="0"/><vcount>4</vcount>
  <p>0 1 2 3</p></polylist></mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id="s">
 <node id="a" name="a"><translate>5 0 0</translate><node id="b" name="b"><scale>-2 1 1</scale>
  <instance_geometry url="#g"><bind_material><technique_common><instance_material symbol="m" target="#m"/>
  </technique_common></bind_material></instance_geometry></node></node>
 <node id="n" name="n"><translate>0 0 9</translate><instance_camera url="#c"/></node>
</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";

TEST(LibraryReader, readsHowPicturesAreLaidOn) {
    const Folder folder;
    std::filesystem::create_directory(folder.path() / "textures");
    folder.write("textures/Wood.png", bytesOf("x"));
    std::string text = kCollada;
    const auto put = [&](const std::string& what, const std::string& instead) {
        text.replace(text.find(what), what.size(), instead);
    };
    put("<library_effects><effect id=\"e\"><profile_COMMON>",
        "<library_images><image "
        "id=\"i\"><init_from>C:/Users/ann/wood.png</init_from></image></library_images>"
        "<library_effects><effect id=\"e\"><profile_COMMON><newparam sid=\"f\"><surface type=\"2D\">"
        "<init_from>i</init_from></surface></newparam><newparam sid=\"w\"><sampler2D><source>f</source>"
        "</sampler2D></newparam>");
    put("<color>0.25 0.5 0.75 1</color>", "<texture texture=\"w\" texcoord=\"UV\"><extra><technique "
                                          "profile=\"MAYA\"><wrapU>1</wrapU><mirrorU>1</mirrorU>"
                                          "<wrapV>0</wrapV><repeatU>2</repeatU><repeatV>3</"
                                          "repeatV><offsetU>0.25</offsetU><offsetV>0.5</offsetV>"
                                          "</technique></extra></texture>");
    const Scene scene = read(folder, bytesOf(text));
    ASSERT_THAT(scene.textures, SizeIs(1));
    EXPECT_EQ(scene.textures[0].wrapU, Wrap::MirroredRepeat);
    EXPECT_EQ(scene.textures[0].wrapV, Wrap::ClampToEdge);
    EXPECT_TRUE(std::filesystem::equivalent(scene.images.at(0).path, folder.path() / "textures/Wood.png"));
    const TextureUse& use = scene.materials.at(0).baseColorTexture;
    EXPECT_THAT(use.scale, ElementsAre(2.0F, 3.0F));
    EXPECT_THAT(use.offset, ElementsAre(0.25F, 1.0F - 3.0F - 0.5F));
    EXPECT_THAT(scene.warnings, testing::IsEmpty());
}

TEST(LibraryReader, readsPlacesMaterialsAndCameras) {
    const Folder folder;
    const Scene scene = read(folder, bytesOf(kCollada));
    ASSERT_THAT(scene.instances, SizeIs(1));
    EXPECT_EQ(scene.count(Topology::Triangles), 2U);
    EXPECT_EQ(scene.bounds().min[0], 3.0) << "5 - 2 * 1";
    EXPECT_EQ(scene.bounds().max[0], 5.0);
    EXPECT_LT(scene.instances[0].toWorld.determinant(), 0.0);
    const Mesh& mesh = scene.meshes.at(0);
    EXPECT_EQ(mesh.normals.at(2), 1.0F);
    const Material& paint = scene.materials.at(static_cast<size_t>(mesh.material));
    EXPECT_EQ(paint.name, "paint");
    EXPECT_FLOAT_EQ(paint.baseColor[2], 0.75F);
    ASSERT_THAT(scene.cameras, SizeIs(1));
    EXPECT_NEAR(scene.cameras[0].yfov, 0.9272952, 1e-5) << "2 * atan(tan(90 / 2) / 2)";
    EXPECT_NEAR(scene.cameras[0].zFar, 50, 1e-4);
    EXPECT_NEAR(scene.cameras[0].toWorld[3][2], 9, 1e-6);
}

} // namespace
} // namespace orloview
