#include "import/FileContent.h"
#include "import/FileMending.h"

#include "import_files.h"

namespace {

using namespace kuvimport;
using importtest::Folder;

ModelFormat FormatOf(const std::string& name, const std::string& bytes)
{
    const Folder folder;
    return FileContent(folder.Write(name, bytes)).Format();
}

TEST(FileContent, TheContentTellsTheFormatUnderAnyName)
{
    EXPECT_EQ(FormatOf("a.stl", "ISO-10303-21;\nHEADER;"), ModelFormat::Step);
    EXPECT_EQ(FormatOf("a", "/* by hand */\nISO-10303-21;\nHEADER;"), ModelFormat::Step);
    EXPECT_EQ(FormatOf("a.step", "#VRML V2.0 utf8\n"), ModelFormat::Vrml);
    EXPECT_EQ(FormatOf("a.obj", "glTF\x02"), ModelFormat::Glb);
    EXPECT_EQ(FormatOf("a.obj", "{\"asset\":{\"version\":\"2.0\"}}"), ModelFormat::Gltf);
    EXPECT_EQ(FormatOf("a", "ply\nformat ascii 1.0\n"), ModelFormat::Ply);
    EXPECT_EQ(FormatOf("a", "OFF\n3 1 0\n"), ModelFormat::Off);
    EXPECT_EQ(FormatOf("a", "SOLID x\n facet normal 0 0 1\n"), ModelFormat::Stl);
    EXPECT_EQ(FormatOf("a", "\nDBRep_DrawableShape\n"), ModelFormat::Brep);
    EXPECT_EQ(FormatOf("a", "<?xml version=\"1.0\"?>\n<COLLADA>"), ModelFormat::Dae);
    EXPECT_EQ(FormatOf("a", std::string(72, ' ') + "S      1\n"), ModelFormat::Iges);
}

TEST(FileContent, ABinaryStlIsKnownByItsLengthEvenWhenItBeginsWithSolid)
{
    std::string bytes = "solid made by a CAD program";
    bytes.resize(80, ' ');
    bytes += std::string("\x02\0\0\0", 4) + std::string(100, '\0');
    EXPECT_EQ(FormatOf("a.step", bytes), ModelFormat::Stl);
}

TEST(FileContent, TheExtensionDecidesWhereTheContentDoesNot)
{
    EXPECT_EQ(FormatOf("a.OBJ", "v 0 0 0\n"), ModelFormat::Obj);
    EXPECT_EQ(FormatOf("a.stp", "version https://example.org"), ModelFormat::Step);
    EXPECT_EQ(FormatOf("a.txt", "v 0 0 0\n"), ModelFormat::Unknown);
    EXPECT_EQ(FormatOf("a", "v 0 0 0\n"), ModelFormat::Unknown);
}

TEST(FileContent, AnExtensionOfAnotherFormatMisleads)
{
    const Folder folder;
    EXPECT_TRUE(FileContent(folder.Write("a.step", "ply\nformat")).ExtensionMisleads());
    EXPECT_FALSE(FileContent(folder.Write("a.ply", "ply\nformat")).ExtensionMisleads());
    EXPECT_FALSE(FileContent(folder.Write("a.dat", "ply\nformat")).ExtensionMisleads());
    EXPECT_FALSE(FileContent(folder.Write("a.gltf", "glTF\x02")).ExtensionMisleads())
        << "both forms of glTF are one format in reports";
}

TEST(FileContent, WhatIsNoFileHasAReason)
{
    const Folder folder;
    EXPECT_EQ(FileContent(folder / "nothing.step").Problem(), "no such file");
    EXPECT_EQ(FileContent(folder / "").Problem(), "is a folder, not a file");
    EXPECT_EQ(FileContent("/dev/null").Problem(), "is not a regular file");
}

TEST(FileContent, TheEndOfALargeFileIsSeen)
{
    const Folder folder;
    const std::string path = folder.Write("a.step", std::string(300000, ' ') + "END-ISO-10303-21;");
    EXPECT_TRUE(FileContent(path).TailContains("END-ISO-10303-21"));
    EXPECT_FALSE(FileContent(path).TailContains("ENDSEC"));
    EXPECT_EQ(FileContent(path).Size(), 300017U);
}

TEST(FileMending, Utf16OfEitherOrderBecomesUtf8)
{
    const Folder folder;
    using namespace std::string_literals;
    const std::string big = "\xFE\xFF\0v\0 \xD8\x3D\xDD\x29\0\n"s;
    const std::string little = "\xFF\xFEv\0 \0\x3D\xD8\x29\xDD\n\0"s;
    EXPECT_EQ(MendedBytes(folder.Write("a.obj", big), ModelFormat::Obj), "v \xF0\x9F\x94\xA9\n");
    EXPECT_EQ(MendedBytes(folder.Write("b.obj", little), ModelFormat::Obj), "v \xF0\x9F\x94\xA9\n");
}

TEST(FileMending, AHalfPairInUtf16BecomesTheReplacementCharacter)
{
    const Folder folder;
    using namespace std::string_literals;
    const std::string path = folder.Write("a.obj", "\xFE\xFF\xDC\x00\0v\xD8\x00"s);
    EXPECT_EQ(MendedBytes(path, ModelFormat::Obj), "\xEF\xBF\xBDv\xEF\xBF\xBD");
}

TEST(FileMending, NumbersOfAnObjFileThatBeginWithTheirPointGetAZero)
{
    const Folder folder;
    EXPECT_EQ(MendedBytes(folder.Write("a.obj", "v .5 1.5\t.25\no a.5 .b\n"), ModelFormat::Obj),
              "v 0.5 1.5\t0.25\no a.5 .b\n");
    EXPECT_EQ(MendedBytes(folder.Write("a.stl", "vertex .5 0 0"), ModelFormat::Stl), "");
}

TEST(FileMending, SoundFilesStayAsTheyAre)
{
    const Folder folder;
    EXPECT_EQ(MendedBytes(folder.Write("a.obj", "v 0 0 0\n"), ModelFormat::Obj), "");
    EXPECT_EQ(MendedBytes(folder.Write("b.obj", ""), ModelFormat::Obj), "");
}

}  // namespace
