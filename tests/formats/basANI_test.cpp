// Animated cursors: the real files' steps, jiffies and hotspots, their frames against the icons
// inside as icotool extracts them, the writer's exact layout and a round trip, the editor's
// frame limit, and damaged files.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "IconTestSupport.h"
#include "basANI.h"

using namespace basANI;
using namespace IconTest;

namespace {

uint32_t LE32At(const std::vector<uint8_t>& B, size_t At)
{
    return B[At] | B[At + 1] << 8 | B[At + 2] << 16 | uint32_t(B[At + 3]) << 24;
}

std::string TagAt(const std::vector<uint8_t>& B, size_t At)
{
    return std::string(B.begin() + long(At), B.begin() + long(At) + 4);
}

size_t Find(const std::vector<uint8_t>& B, const char* Tag)
{
    return size_t(std::search(B.begin(), B.end(), Tag, Tag + 4) - B.begin());
}

// The data of each "icon" chunk, walking the chunks behind "fram".
std::vector<std::vector<uint8_t>> IconChunks(const std::vector<uint8_t>& B)
{
    std::vector<std::vector<uint8_t>> Icons;
    for (size_t At = Find(B, "fram") + 4; At + 8 <= B.size() && TagAt(B, At) == "icon";) {
        const size_t Size = LE32At(B, At + 4);
        Icons.emplace_back(B.begin() + long(At) + 8, B.begin() + long(At + 8 + Size));
        At += 8 + Size + (Size & 1);
    }
    return Icons;
}

// Frame 0 black and white (1 bit), frame 1 static colours (4 bits), the others true colour.
AniFrameList MakeFrames(int Count)
{
    AniFrameList Frames;
    for (int I = 0; I < Count; ++I) {
        Frames.push_back(std::make_unique<AniFrame>());
        MakePictures(Frames.back()->Image, Frames.back()->Mask, 32, 32,
                     [I](int X, int Y) {
                         return I == 0 ? (X > Y ? 0xFFFFFFu : 0u)
                                : I == 1 ? ((X + Y) % 3 ? 0x0000FFu : 0xC0C0C0u)
                                         : uint32_t(X * 8 | Y * 8 << 8 | (I * 3 & 255) << 16);
                     },
                     [I](int X, int Y) { return (X + Y + I) % 5 == 0; });
    }
    return Frames;
}

std::string WriteAni(const std::string& Name, int Count, const std::vector<uint32_t>& Jiffies)
{
    int16_t Failed = -1;
    EXPECT_EQ(SaveAniFile(Scratch(Name), MakeFrames(Count), Jiffies, 3, 4, Scratch(""), Failed), SaveOk);
    return Scratch(Name);
}

} // namespace

TEST(basANI, RealFilesStepsJiffiesAndHotspot)
{
    const struct {
        const char* File;
        int16_t Steps;
        std::vector<uint8_t> Jiffies;  // for as many frames as the file has
        int16_t HotX, HotY;
    } Cases[] = {
        // "seq " of 20 steps and no rates: the byte 8 before "seq " is the default rate of anih.
        {"anifx-test.ani", 20, std::vector<uint8_t>(20, 12), 0, 0},
        {"gdk-test-animation.ani", 18, std::vector<uint8_t>(18, 2), 1, 12},  // anih only
        {"sdl_image-rgbrgb.ani", 0, {1, 1, 1, 1, 2, 1}, 0, 0},              // PNG frames cannot be drawn
        {"wx-hourglass.ani", 20, {24, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4, 4}, 16, 15},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.File);
        const std::string File = TestData + "/ani/" + C.File;
        AniCursor Cursor;
        ASSERT_TRUE(LoadAniCursor(File, Cursor));
        EXPECT_EQ(CountAniSteps(Cursor), C.Steps);
        AniData Data;
        ASSERT_TRUE(ReadAniData(File, int16_t(C.Jiffies.size()), Data));
        EXPECT_EQ(Data.Jiffies, C.Jiffies);
        EXPECT_TRUE(Data.HasHotspot);
        EXPECT_EQ(Data.HotspotX * 100 + Data.HotspotY, C.HotX * 100 + C.HotY);
        AniFrameList Frames;
        EXPECT_EQ(ReadAniFile(File, MaxFrames, Frames, Data), C.Steps ? AniOk : AniFrameLimit);
        EXPECT_EQ(Frames.size(), size_t(C.Steps));
    }
    EXPECT_EQ(FrameLimitMessage(), "Either an invalid ANI file or number of frames exceeds limit of 70.");
}

// Each step's picture is the icon of its frame as icotool extracts it (the 32 pixel image of
// gdk's frames), for 32-bit icons drawn over black by the alpha; the steps of anifx follow
// its "seq " chunk.
TEST(basANI, FramesAreTheIconsInside)
{
    const struct {
        const char* File;
        int Image;
        std::vector<int> Sequence;
    } Cases[] = {
        {"wx-hourglass.ani", 1, {}},
        {"gdk-test-animation.ani", 2, {}},
        {"anifx-test.ani", 1, {0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 0, 1, 2, 3, 2, 1}},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.File);
        const std::string File = TestData + "/ani/" + C.File;
        const std::vector<std::vector<uint8_t>> Icons = IconChunks(FileBytes(File));
        AniCursor Cursor;
        ASSERT_TRUE(LoadAniCursor(File, Cursor));
        const int16_t Steps = CountAniSteps(Cursor);
        ASSERT_EQ(Steps, C.Sequence.empty() ? int16_t(Icons.size()) : int16_t(C.Sequence.size()));
        std::map<int, std::vector<uint32_t>> Extracted;
        for (int16_t Step = 0; Step < Steps; ++Step) {
            const int Frame = C.Sequence.empty() ? Step : C.Sequence[size_t(Step)];
            if (!Extracted.count(Frame)) {
                WriteBytes(Scratch("frame.cur"), Icons.at(size_t(Frame)));
                Extracted[Frame] = IcotoolPixels(Scratch("frame.cur"), C.Image);
            }
            const std::vector<uint32_t>& Theirs = Extracted[Frame];
            ASSERT_EQ(Theirs.size(), 32u * 32);
            clsDIB Image, Mask;
            ASSERT_TRUE(DrawAniStep(Cursor, Step, Image, Mask));
            const std::vector<uint32_t> Ours = Colors(Image), OurMask = Colors(Mask);
            for (size_t I = 0; I < Theirs.size(); ++I) {
                const uint32_t A = Theirs[I] >> 24;
                if (A == 0 && OurMask[I] == 0xFFFFFF)
                    continue;
                uint32_t Expected = 0;
                for (int Shift = 0; Shift < 24; Shift += 8)
                    Expected |= (((Theirs[I] >> Shift) & 255) * A + 127) / 255 << Shift;
                ASSERT_EQ(OurMask[I], 0u) << "step " << Step << " pixel " << I;
                ASSERT_EQ(Ours[I], Expected) << "step " << Step << " pixel " << I;
            }
        }
    }
}

TEST(basANI, WrittenFileHasTheProgramsLayout)
{
    const std::string File = WriteAni("layout.ani", 3, {5, 300, 90});
    const std::vector<uint8_t> B = FileBytes(File);
    const std::string Title = "Edited with Icon Editor of Orvelle Works", Artist = "OrvelleWorks";
    // Tags and 32-bit fields from the start; strings are not padded to even lengths.
    const std::string Head = "RIFF....ACONLIST....INFOINAM...." + Title + '\0' + "IART...." + Artist + '\0' +
                             "anih" + std::string(40, '.') + "rate" + std::string(16, '.') + "LIST....fram";
    ASSERT_GT(B.size(), Head.size());
    for (size_t I = 0; I < Head.size(); ++I)
        EXPECT_TRUE(Head[I] == '.' || B[I] == uint8_t(Head[I])) << "byte " << I;
    const size_t Anih = Find(B, "anih"), Fram = Find(B, "fram");
    const std::vector<std::pair<size_t, uint32_t>> Fields = {
        {4, uint32_t(B.size())},  // the whole length, eight more than RIFF asks for
        {16, uint32_t(Title.size() + Artist.size() + 22)}, {28, uint32_t(Title.size() + 1)},
        {77, uint32_t(Artist.size() + 1)}};
    for (const auto& [At, Value] : Fields)
        EXPECT_EQ(LE32At(B, At), Value) << "byte " << At;
    const uint32_t AnihFields[] = {36, 36, 3, 3, 0, 0, 0, 0, 10, 1, 'r' | 'a' << 8 | 't' << 16 | uint32_t('e') << 24,
                                   12, 5, 300, 90};
    for (size_t I = 0; I < std::size(AnihFields); ++I)
        EXPECT_EQ(LE32At(B, Anih + 4 + 4 * I), AnihFields[I]) << "field " << I;

    // Each frame is the icon SaveIconFile writes, made a cursor with the hotspot.
    const AniFrameList Frames = MakeFrames(3);
    const std::vector<std::vector<uint8_t>> Icons = IconChunks(B);
    ASSERT_EQ(Icons.size(), 3u);
    uint32_t FramSize = 4;
    for (size_t I = 0; I < 3; ++I) {
        Array2D<uint8_t> NoAlpha;
        ASSERT_TRUE(
            basIconCursor::SaveIconFile(Frames[I]->Image, Frames[I]->Mask, Scratch("plain.ico"), false, NoAlpha));
        std::vector<uint8_t> Expected = FileBytes(Scratch("plain.ico"));
        Expected[2] = 2, Expected[10] = 3, Expected[11] = 0, Expected[12] = 4, Expected[13] = 0;
        EXPECT_EQ(Icons[I], Expected) << "frame " << I;
        FramSize += uint32_t(Icons[I].size()) + 8;
    }
    EXPECT_EQ(LE32At(B, Fram - 4), FramSize);
    EXPECT_EQ(Fram + FramSize, B.size());
    WriteBytes(Scratch("frame.cur"), Icons[1]);
    const std::vector<ListedImage> Listed = IcotoolList(Scratch("frame.cur"));
    ASSERT_EQ(Listed.size(), 1u);
    EXPECT_TRUE(Listed[0].Cursor());
    EXPECT_EQ(Listed[0].Field("bit-depth") * 10000 + Listed[0].Field("hotspot-x") * 100 + Listed[0].Field("hotspot-y"),
              40304);
    for (const auto& Entry : std::filesystem::directory_iterator(Scratch("")))
        EXPECT_NE(Entry.path().filename().string().rfind("ANI_Tmp_", 0), 0u);

    // Read back: the same pictures, the rates' low bytes clamped, the hotspot.
    AniFrameList Read;
    AniData Data;
    ASSERT_EQ(ReadAniFile(File, MaxFrames, Read, Data), AniOk);
    ASSERT_EQ(Read.size(), 3u);
    for (size_t I = 0; I < 3; ++I) {
        EXPECT_EQ(Colors(Read[I]->Image), Colors(Frames[I]->Image)) << "frame " << I;
        EXPECT_EQ(Colors(Read[I]->Mask), Colors(Frames[I]->Mask)) << "frame " << I;
    }
    EXPECT_EQ(Data.Jiffies, (std::vector<uint8_t>{5, 44, 90}));
    EXPECT_EQ(Data.HotspotX * 100 + Data.HotspotY, 304);
}

TEST(basANI, RatesKeepOnlyTheirLowByteClampedToNinety)
{
    AniData Data;
    ASSERT_TRUE(ReadAniData(WriteAni("rates.ani", 6, {300, 256, 511, 0, 45, 0x10007}), 6, Data));
    EXPECT_EQ(Data.Jiffies, (std::vector<uint8_t>{44, 1, 90, 1, 45, 7}));
}

TEST(basANI, TheEditorTakesAtMostSeventyFrames)
{
    AniFrameList Frames;
    AniData Data;
    EXPECT_EQ(ReadAniFile(WriteAni("seventy.ani", 70, std::vector<uint32_t>(70, 6)), MaxFrames, Frames, Data), AniOk);
    EXPECT_EQ(Frames.size(), 70u);
    EXPECT_EQ(ReadAniFile(WriteAni("more.ani", 71, std::vector<uint32_t>(71, 6)), MaxFrames, Frames, Data),
              AniFrameLimit);
    EXPECT_TRUE(Frames.empty());
    int16_t Failed = -1;
    EXPECT_EQ(SaveAniFile(Scratch("short.ani"), MakeFrames(2), {1}, 0, 0, Scratch(""), Failed), SaveNoFrames);
    EXPECT_EQ(SaveAniFile(Scratch("gone.ani"), MakeFrames(2), {1, 1}, 0, 0, Scratch("no/such"), Failed),
              SaveFrameFailed);
    EXPECT_EQ(Failed, 1);
}

// Changes to a written file of three frames and what reading makes of them; none may crash.
TEST(basANI, DamagedFilesGiveFalseOrFewerSteps)
{
    const std::vector<uint8_t> Good = FileBytes(WriteAni("good.ani", 3, {7, 8, 9}));
    const size_t Icon1 = Find(Good, "fram") + 4, Icon2 = Icon1 + 8 + LE32At(Good, Icon1 + 4);
    const auto Put32 = [](std::vector<uint8_t>& B, size_t At, uint32_t V) {
        for (int I = 0; I < 4; ++I)
            B[At + I] = uint8_t(V >> (8 * I));
    };
    const struct {
        const char* Name;
        std::function<void(std::vector<uint8_t>&)> Change;
        bool Loads;
        int16_t Steps;
        bool Data, Hotspot;
        int16_t HotX;
    } Cases[] = {
        {"unchanged", [](auto&) {}, true, 3, true, true, 3},
        {"not ACON", [](auto& B) { B[8] = 'X'; }, false, 0, true, true, 3},
        {"not RIFF", [](auto& B) { B[0] = 'X'; }, false, 0, false, false, 0},
        {"no anih", [](auto& B) { B[Find(B, "anih")] = 'X'; }, true, 3, false, false, 0},
        {"second frame cut", [&](auto& B) { B.resize(Icon2 + 100); }, true, 1, true, true, 3},
        {"fram list too long", [&](auto& B) { Put32(B, Icon1 - 8, 0xFFFFFFFF); }, true, 3, true, true, 3},
        {"icon chunk too long", [&](auto& B) { Put32(B, Icon2 + 4, 0x7FFFFFF0); }, true, 2, true, true, 3},
        {"frame not an icon", [&](auto& B) { B[Icon1 + 10] = 3; }, true, 0, true, false, 0},
        {"entry of 0 by 0", [&](auto& B) { B[Icon1 + 14] = B[Icon1 + 15] = 0; }, true, 3, true, true, 3},
        {"hotspot beyond 31", [&](auto& B) { B[Icon1 + 18] = 200; }, true, 3, true, true, 31},
        {"frame of 256 pixels", [&](auto& B) { Put32(B, Icon1 + 8 + 26, 256); }, true, 0, true, true, 3},
    };
    for (const auto& C : Cases) {
        SCOPED_TRACE(C.Name);
        std::vector<uint8_t> Bytes = Good;
        C.Change(Bytes);
        WriteBytes(Scratch("damaged.ani"), Bytes);
        AniCursor Cursor;
        ASSERT_EQ(LoadAniCursor(Scratch("damaged.ani"), Cursor), C.Loads);
        EXPECT_EQ(CountAniSteps(Cursor), C.Steps);
        AniData Data;
        ASSERT_EQ(ReadAniData(Scratch("damaged.ani"), 3, Data), C.Data);
        EXPECT_EQ(Data.HasHotspot, C.Hotspot);
        EXPECT_EQ(Data.HotspotX, C.HotX);
    }
    for (size_t Length = 0; Length < Good.size(); Length += 11) {
        WriteBytes(Scratch("cut.ani"), std::vector<uint8_t>(Good.begin(), Good.begin() + long(Length)));
        AniCursor Cursor;
        LoadAniCursor(Scratch("cut.ani"), Cursor);
        EXPECT_LE(CountAniSteps(Cursor), 3);
    }
}

// A "seq " chunk orders the steps; stepping ends at a frame that does not exist and never goes
// past 128 steps. Rates, when present, are read rather than the byte before "seq ".
TEST(basANI, SequenceOrdersTheStepsUpTo128)
{
    const std::vector<uint8_t> B = FileBytes(WriteAni("seq.ani", 2, {1, 1}));
    const auto WithSequence = [&](const std::vector<uint32_t>& Steps) {
        std::vector<uint8_t> Out = B, Chunk = {'s', 'e', 'q', ' '};
        std::vector<uint32_t> Fields = {uint32_t(Steps.size() * 4)};
        Fields.insert(Fields.end(), Steps.begin(), Steps.end());
        for (const uint32_t V : Fields)
            for (int I = 0; I < 4; ++I)
                Chunk.push_back(uint8_t(V >> (8 * I)));
        Out.insert(Out.begin() + long(Find(B, "rate")), Chunk.begin(), Chunk.end());
        WriteBytes(Scratch("seq.ani"), Out);
        return Scratch("seq.ani");
    };
    AniCursor Cursor;
    clsDIB Image, Mask;
    ASSERT_TRUE(LoadAniCursor(WithSequence({1, 0, 1, 1}), Cursor));
    EXPECT_EQ(CountAniSteps(Cursor), 4);
    ASSERT_TRUE(DrawAniStep(Cursor, 0, Image, Mask));
    EXPECT_EQ(Colors(Image), Colors(MakeFrames(2)[1]->Image));
    ASSERT_TRUE(LoadAniCursor(WithSequence({0, 1, 5, 0}), Cursor));
    EXPECT_EQ(CountAniSteps(Cursor), 2);
    ASSERT_TRUE(LoadAniCursor(WithSequence(std::vector<uint32_t>(150, 1)), Cursor));
    EXPECT_EQ(CountAniSteps(Cursor), MaxSteps);
    AniData Data;
    ASSERT_TRUE(ReadAniData(Scratch("seq.ani"), 2, Data));
    EXPECT_EQ(Data.Jiffies, (std::vector<uint8_t>{1, 1}));
}
