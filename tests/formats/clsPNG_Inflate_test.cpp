// clsPNG::Inflate against zlib on well-formed streams, and against a slow reference decoder that
// follows the decoding rules literally on damaged ones.
#include "clsPNG.h"
#include "DeflateStreams.h"
#include "InflateReference.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace InflateReference;

struct Outcome {
    int32_t Result;
    size_t Written;
    Bytes Out;
    int Messages;
};

int MessageCount = 0;
std::string LastText, LastTitle;

// Runs the decoder under test into a buffer of OutSize bytes filled with 0xA5.
Outcome RunInflate(const Bytes& In, size_t OutSize, bool Deflate64 = false)
{
    Outcome O{0, 99999, Bytes(OutSize, 0xA5), 0};
    MessageCount = 0;
    O.Result = clsPNG::Inflate(In.data(), In.size(), O.Out, Deflate64, &O.Written);
    O.Messages = MessageCount;
    return O;
}

Outcome RunReference(const Bytes& In, size_t OutSize, bool Deflate64 = false)
{
    Reference R{In.data(), In.size() * 8, 0, Bytes(OutSize, 0xA5), 0, Deflate64, 0};
    const int32_t Result = R.Run();
    return {Result, R.Produced, std::move(R.Out), R.Messages};
}

class clsPNG_Inflate : public ::testing::Test {
protected:
    void SetUp() override
    {
        Saved = clsPNG::MessageSink;
        clsPNG::MessageSink = [](const std::string& Text, const std::string& Title) {
            ++MessageCount;
            LastText = Text;
            LastTitle = Title;
        };
    }
    void TearDown() override { clsPNG::MessageSink = Saved; }
    decltype(clsPNG::MessageSink) Saved;
};

// Raw deflate data from zlib. Chunks > 0 feeds the data in pieces with a sync flush between
// them and the parameters changed from piece to piece, giving streams of mixed block types.
Bytes ZlibDeflate(const Bytes& Data, int Level, int Strategy, int Chunks = 0)
{
    z_stream S{};
    EXPECT_EQ(deflateInit2(&S, Level, Z_DEFLATED, -15, 8, Strategy), Z_OK);
    Bytes Out(deflateBound(&S, Data.size()) + 64 * (Chunks + 1) + 64);
    S.next_out = Out.data();
    S.avail_out = uInt(Out.size());
    const size_t Piece = Chunks > 0 ? Data.size() / Chunks + 1 : Data.size();
    static constexpr int Strategies[] = {Z_DEFAULT_STRATEGY, Z_FIXED, Z_RLE, Z_HUFFMAN_ONLY};
    for (size_t At = 0, K = 0; At < Data.size() || K == 0; At += Piece, ++K) {
        if (Chunks > 0 && K > 0) {
            EXPECT_EQ(deflateParams(&S, int(K % 10), Strategies[K % 4]), Z_OK);
        }
        const size_t N = std::min(Piece, Data.size() - At);
        S.next_in = const_cast<Bytef*>(Data.data() + At);
        S.avail_in = uInt(N);
        const bool Last = At + N >= Data.size();
        EXPECT_EQ(deflate(&S, Last ? Z_FINISH : Z_SYNC_FLUSH), Last ? Z_STREAM_END : Z_OK);
        if (Last)
            break;
    }
    Out.resize(S.total_out);
    deflateEnd(&S);
    return Out;
}

// Sample data of several kinds, the same on every run.
Bytes Sample(int Kind, size_t Size, uint32_t Seed)
{
    std::mt19937 R(Seed);
    Bytes B(Size);
    static const char* const Words[] = {"the ", "picture ", "frame ", "icon ", "colour ", "palette ", "\n", ", "};
    for (size_t I = 0; I < Size;) {
        switch (Kind) {
        case 0:  // noise: stored blocks or flat codes
            B[I++] = uint8_t(R());
            break;
        case 1:  // text
            for (const char* W = Words[R() % 8]; *W && I < Size; ++W)
                B[I++] = uint8_t(*W);
            break;
        case 2: {  // runs of a few values
            const uint8_t V = uint8_t(R() % 4 * 60);
            for (size_t N = R() % 600 + 1; N-- && I < Size;)
                B[I++] = V;
            break;
        }
        case 3: {  // skewed values: codes up to 15 bits long
            unsigned V = 0;
            while (V < 255 && R() % 3 != 0)
                ++V;
            B[I++] = uint8_t(V);
            break;
        }
        default:  // filtered rows of a smooth picture with distant repeats
            B[I] = uint8_t(I % 769 == 0 ? 1 : (I / 3 % 7) + (R() % 5 == 0 ? R() % 9 : 0));
            ++I;
            break;
        }
    }
    return B;
}

void ExpectDecodes(const Bytes& Stream, const Bytes& Data, const std::string& What)
{
    const Outcome Exact = RunInflate(Stream, Data.size());
    EXPECT_EQ(Exact.Result, clsPNG::InflateOK) << What;
    EXPECT_EQ(Exact.Written, Data.size()) << What;
    EXPECT_TRUE(Exact.Out == Data) << What;
    // A larger buffer, as the PNG reader gives: the tail stays untouched.
    Outcome Larger = RunInflate(Stream, Data.size() + 100);
    EXPECT_EQ(Larger.Result, clsPNG::InflateOK) << What;
    EXPECT_EQ(Larger.Written, Data.size()) << What;
    EXPECT_TRUE(std::equal(Data.begin(), Data.end(), Larger.Out.begin())) << What;
    EXPECT_TRUE(std::all_of(Larger.Out.begin() + long(Data.size()), Larger.Out.end(), [](uint8_t B) {
        return B == 0xA5;
    })) << What;
    const Outcome Ref = RunReference(Stream, Data.size());
    EXPECT_EQ(Ref.Result, clsPNG::InflateOK) << What;
    EXPECT_TRUE(Ref.Out == Data) << What;
}

TEST_F(clsPNG_Inflate, DecodesWhatZlibCompresses)
{
    static constexpr int Strategies[] = {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED};
    static constexpr size_t Sizes[] = {0, 1, 300, 9000, 70000};
    for (int Kind = 0; Kind < 5; ++Kind)
        for (size_t Size : Sizes) {
            const Bytes Data = Sample(Kind, Size, uint32_t(Kind * 7 + Size));
            for (int Level : {0, 1, 6, 9})
                for (int Strategy : Strategies)
                    ExpectDecodes(ZlibDeflate(Data, Level, Strategy), Data,
                                  "kind " + std::to_string(Kind) + " size " + std::to_string(Size) + " level " +
                                      std::to_string(Level) + " strategy " + std::to_string(Strategy));
            ExpectDecodes(ZlibDeflate(Data, 6, Z_DEFAULT_STRATEGY, 7), Data,
                          "mixed blocks, kind " + std::to_string(Kind));
        }
    // compress2 output without its two header bytes: the Adler-32 left after the final block
    // is not read.
    const Bytes Data = Sample(1, 5000, 3);
    Bytes Z(compressBound(uLong(Data.size())));
    uLongf Length = uLongf(Z.size());
    ASSERT_EQ(compress2(Z.data(), &Length, Data.data(), uLong(Data.size()), 9), Z_OK);
    ExpectDecodes(Bytes(Z.begin() + 2, Z.begin() + long(Length)), Data, "compress2 output");
}

TEST_F(clsPNG_Inflate, DecodesTheImageDataOfPngSuite)
{
    int Files = 0;
    for (const auto& Entry :
         std::filesystem::directory_iterator(std::filesystem::path(TESSAVO_TESTDATA) / "pngsuite" / "png")) {
        std::ifstream F(Entry.path(), std::ios::binary);
        const Bytes File((std::istreambuf_iterator<char>(F)), std::istreambuf_iterator<char>());
        Bytes Idat;
        for (size_t At = 8; At + 12 <= File.size();) {
            const size_t Length =
                size_t(File[At]) << 24 | size_t(File[At + 1]) << 16 | size_t(File[At + 2]) << 8 | File[At + 3];
            if (Length > File.size() - At - 12)
                break;
            if (std::memcmp(&File[At + 4], "IDAT", 4) == 0)
                Idat.insert(Idat.end(), File.begin() + long(At + 8), File.begin() + long(At + 8 + Length));
            At += Length + 12;
        }
        // The expected rows from zlib; corrupt members of the suite are left out.
        Bytes Rows(1 << 20);
        uLongf RowsLength = uLongf(Rows.size());
        if (Idat.size() < 2 || uncompress(Rows.data(), &RowsLength, Idat.data(), uLong(Idat.size())) != Z_OK)
            continue;
        Rows.resize(RowsLength);
        ExpectDecodes(Bytes(Idat.begin() + 2, Idat.end()), Rows, Entry.path().filename().string());
        ++Files;
    }
    EXPECT_GE(Files, 120);
}


TEST_F(clsPNG_Inflate, ReportsEachFailure)
{
    struct Case {
        const char* Name;
        Bytes Stream;
        int32_t Result;
        size_t Written;
        int Messages;
    };
    std::vector<uint8_t> Over(257, 0);  // three codes of one bit
    Over[0] = Over[1] = Over[256] = 1;
    constexpr size_t HeaderBits = 3 + 14 + 57 + 259 * 5;
    BitWriter Unused = DynamicHeader(true, IncompleteLit(), {0});
    Unused.Code(0, 1).Code(0, 1).Code(3, 2).Code(0, 8);
    // The input ends on 11: no code matches it, but the walk would need a third bit.
    BitWriter UnusedAtEnd = DynamicHeader(true, IncompleteLit(), {0});
    while (UnusedAtEnd.Count % 8 != 6)
        UnusedAtEnd.Code(0, 1);
    const size_t UnusedAs = UnusedAtEnd.Count - HeaderBits;
    UnusedAtEnd.Code(3, 2);
    // A length code as the last bits of the input, with no distance code: it fails all the same.
    BitWriter NoDistance = DynamicHeader(true, IncompleteLit(true), {0});
    while (NoDistance.Count % 8 != 6)
        NoDistance.Code(0, 1);
    const size_t NoDistanceAs = NoDistance.Count - HeaderBits;
    NoDistance.Code(2, 2);
    const std::vector<Case> Cases = {
        {"empty input", {}, clsPNG::InflateInputEnded, 0, 0},
        {"fixed block cut in a code", BitWriter().Put(3, 3).Fixed('a').Fixed('b').Out, clsPNG::InflateInputEnded, 2, 0},
        {"cut inside a match", BitWriter().Put(3, 3).Fixed('a').Fixed(284).Out, clsPNG::InflateInputEnded, 1, 0},
        {"cut in a length's extra bits", BitWriter().Put(3, 3).Fixed(200).Fixed(284).Out, clsPNG::InflateInputEnded, 1,
         0},
        {"stored block cut in NLEN", BitWriter().Put(1, 3).Aligned({5, 0, 0xFA}).Out, clsPNG::InflateInputEnded, 0, 0},
        {"stored complements wrong", BitWriter().Put(1, 3).Aligned({1, 0, 0xFF, 0xFF, 'x'}).Out,
         clsPNG::InflateStoredLength, 0, 0},
        {"stored LEN past the input", BitWriter().Put(1, 3).Aligned({3, 0, 0xFC, 0xFF, 'x', 'y'}).Out,
         clsPNG::InflateStoredLength, 0, 0},
        {"block type 3", BitWriter().Put(7, 3).Out, clsPNG::InflateBlockType, 0, 0},
        {"type 3 after a block", BitWriter().Put(2, 3).Fixed('q').Fixed(256).Put(6, 3).Code(0, 8).Out,
         clsPNG::InflateBlockType, 1, 0},
        {"symbol 286", BitWriter().Put(3, 3).Fixed('a').Fixed(286).Code(0, 16).Out, clsPNG::InflateBadCode, 1, 0},
        {"distance code 30", BitWriter().Put(3, 3).Fixed('a').Fixed(257).Code(30, 5).Code(0, 16).Out,
         clsPNG::InflateBadCode, 1, 0},
        {"distance past the start", BitWriter().Put(3, 3).Fixed('a').Fixed(257).Code(1, 5).Fixed(256).Out,
         clsPNG::InflateBadCode, 1, 0},
        {"unused pattern", Unused.Out, clsPNG::InflateBadCode, 2, 0},
        {"unused pattern at the input's end", UnusedAtEnd.Out, clsPNG::InflateInputEnded, UnusedAs, 0},
        {"empty distance code", NoDistance.Out, clsPNG::InflateBadCode, NoDistanceAs, 0},
        {"repeat first", DynamicHeader(true, Over, {1}, {16, 0}).Out, clsPNG::InflateRepeatFirst, 0, 0},
        {"repeat cut in its extra bits", DynamicHeader(true, Over, {1}, {3, 3, 3, 3, 3, 16}).Out,
         clsPNG::InflateInputEnded, 0, 0},
        {"run past the lengths",
         DynamicHeader(true, Over, {1}, {18}).Put(127, 7).Code(18, 5).Put(127, 7).Code(17, 5).Put(7, 3).Out,
         clsPNG::InflateRepeatOverrun, 0, 0},
        {"literal code over-subscribed", DynamicHeader(true, Over, {1}).Code(0, 8).Out, clsPNG::InflateTree, 0, 1},
        {"code-length code over-subscribed",
         BitWriter().Put(5, 3).Put(0, 14).Put(1, 3).Put(1, 3).Put(1, 3).Put(1, 3).Code(0, 16).Out, clsPNG::InflateTree,
         0, 1},
        {"header cut", BitWriter().Put(5, 3).Put(0, 10).Out, clsPNG::InflateInputEnded, 0, 0},
    };
    for (const Case& C : Cases) {
        const Outcome O = RunInflate(C.Stream, 64);
        EXPECT_EQ(O.Result, C.Result) << C.Name;
        EXPECT_EQ(O.Written, C.Written) << C.Name;
        EXPECT_EQ(O.Messages, C.Messages) << C.Name;
        const Outcome R = RunReference(C.Stream, 64);
        EXPECT_EQ(R.Result, C.Result) << C.Name;
        EXPECT_EQ(R.Written, C.Written) << C.Name;
    }
}

TEST_F(clsPNG_Inflate, ShowsTheTreeMessageForEveryDynamicCode)
{
    std::vector<uint8_t> Over(257, 0);
    Over[0] = Over[1] = Over[256] = 1;
    const Bytes Streams[] = {
        DynamicHeader(true, Over, {1}).Out,                                            // literal/length code
        DynamicHeader(true, IncompleteLit(), {1, 1, 1}).Out,                           // distance code
        BitWriter().Put(5, 3).Put(0, 14).Put(7, 3).Put(1, 3).Put(1, 3).Put(1, 3).Out,  // code-length code
    };
    for (const Bytes& Stream : Streams) {
        LastText.clear();
        LastTitle.clear();
        const Outcome O = RunInflate(Stream, 10);
        EXPECT_EQ(O.Result, clsPNG::InflateTree);
        EXPECT_EQ(O.Messages, 1);
        EXPECT_EQ(LastText, "Error in tree creation (Static)");
        EXPECT_EQ(LastTitle, "Tessavo, Icon Editor & Animated GIF Editor");
    }
    clsPNG::MessageSink = nullptr;
    Bytes Out(10);
    EXPECT_EQ(clsPNG::Inflate(Streams[0].data(), Streams[0].size(), Out, false), clsPNG::InflateTree);
}

TEST_F(clsPNG_Inflate, CutsOutputOnTheLastPositionAndGoesOn)
{
    struct Case {
        const char* Name;
        Bytes Stream;
        size_t OutSize;
        int32_t Result;
        size_t Written;
        std::string Out;
    };
    const auto Fixed = [](bool Final) {
        return BitWriter().Put(Final ? 3 : 2, 3);
    };
    const std::vector<Case> Cases = {
        {"stored block", BitWriter().Put(1, 3).Aligned({6, 0, 0xF9, 0xFF, 'A', 'B', 'C', 'D', 'E', 'F'}).Out, 3, 0, 6,
         "ABF"},
        {"error after the cut",
         BitWriter().Put(0, 3).Aligned({6, 0, 0xF9, 0xFF, 'A', 'B', 'C', 'D', 'E', 'F'}).Put(7, 3).Out, 3,
         clsPNG::InflateBlockType, 6, "ABF"},
        // abc, then 5 bytes from 3 back: a fits, the others read position 4 - 3 = 1
        {"copy across the cut", Fixed(true).Fixed('a').Fixed('b').Fixed('c').Fixed(259).Code(2, 5).Fixed(256).Out, 4, 0,
         8, "abcb"},
        {"literal after a cut copy",
         Fixed(true).Fixed('a').Fixed('b').Fixed('c').Fixed(259).Code(2, 5).Fixed('z').Fixed(256).Out, 4, 0, 9, "abcz"},
        {"run across the cut", Fixed(true).Fixed('x').Fixed(264).Code(0, 5).Fixed(256).Out, 5, 0, 11, "xxxxx"},
        // once cut, a source before the start of a 2-byte buffer reads as 0
        {"source before the start", Fixed(true).Fixed('a').Fixed('b').Fixed('c').Fixed(257).Code(2, 5).Fixed(256).Out,
         2, 0, 6, std::string("a\0", 2)},
        {"empty buffer", BitWriter().Put(1, 3).Aligned({3, 0, 0xFC, 0xFF, 'A', 'B', 'C'}).Out, 0, 0, 3, ""},
        {"empty buffer, later error", Fixed(false).Fixed('a').Fixed(257).Code(0, 5).Fixed(286).Code(0, 8).Out, 0,
         clsPNG::InflateBadCode, 4, ""},
    };
    for (const Case& C : Cases) {
        for (const Outcome& O : {RunInflate(C.Stream, C.OutSize), RunReference(C.Stream, C.OutSize)}) {
            EXPECT_EQ(O.Result, C.Result) << C.Name;
            EXPECT_EQ(O.Written, C.Written) << C.Name;
            EXPECT_EQ(std::string(O.Out.begin(), O.Out.end()), C.Out) << C.Name;
        }
    }
}

TEST_F(clsPNG_Inflate, ReadsTheDeflate64LengthOnlyWhenAsked)
{
    // 'a', then symbol 285 with the 16 bits 1000, distance 1.
    const Bytes Stream = BitWriter().Put(3, 3).Fixed('a').Fixed(285).Put(1000, 16).Code(0, 5).Fixed(256).Out;
    const Outcome On = RunInflate(Stream, 1004, true);
    EXPECT_EQ(On.Result, clsPNG::InflateOK);
    EXPECT_EQ(On.Written, 1004u);
    EXPECT_TRUE(std::all_of(On.Out.begin(), On.Out.end(), [](uint8_t B) { return B == 'a'; }));
    // Without the switch 285 is 258 and its first five "extra" bits, 00010, are distance 3.
    const Outcome Off = RunInflate(Stream, 1004, false);
    EXPECT_EQ(Off.Result, clsPNG::InflateBadCode);
    EXPECT_EQ(Off.Written, 1u);
    // A long match through the fast path, and one past the end of the buffer.
    BitWriter Long = BitWriter().Put(3, 3);
    for (int I = 0; I < 40; ++I)
        Long.Fixed('a' + I % 7);
    Long.Fixed(285).Put(60000, 16).Code(13, 5).Put(10, 5).Fixed('z').Fixed(256);  // distance 107 > 40: fails
    EXPECT_EQ(RunInflate(Long.Out, 70000, true).Result, clsPNG::InflateBadCode);
    BitWriter Good = BitWriter().Put(3, 3);
    for (int I = 0; I < 40; ++I)
        Good.Fixed('a' + I % 7);
    Good.Fixed(285).Put(60000, 16).Code(9, 5).Put(2, 3).Fixed('z').Fixed(256);  // distance 27
    for (size_t Size : {60044u, 70000u, 1000u}) {
        const Outcome O = RunInflate(Good.Out, Size, true);
        EXPECT_EQ(O.Result, clsPNG::InflateOK);
        EXPECT_EQ(O.Written, 60044u);
        const Outcome R = RunReference(Good.Out, Size, true);
        EXPECT_TRUE(O.Out == R.Out) << Size;
    }
}

// Raw deflate data decoded by zlib; an empty result when zlib refuses it.
Bytes ZlibInflate(const Bytes& Stream, size_t Size)
{
    Bytes Out(Size + 1);
    z_stream S{};
    inflateInit2(&S, -15);
    S.next_in = const_cast<Bytef*>(Stream.data());
    S.avail_in = uInt(Stream.size());
    S.next_out = Out.data();
    S.avail_out = uInt(Out.size());
    const int R = inflate(&S, Z_FINISH);
    Out.resize(S.total_out);
    inflateEnd(&S);
    return R == Z_STREAM_END ? Out : Bytes();
}

TEST_F(clsPNG_Inflate, CopiesOverlappingMatchesOfEveryShortDistance)
{
    // A fixed block of literals and matches at distances 1 to 40 and lengths up to 258, long
    // enough for the fast path; zlib decodes it too.
    std::mt19937 R(11);
    BitWriter W = BitWriter().Put(3, 3);
    size_t Produced = 0;
    for (int I = 0; I < 50; ++I, ++Produced)
        W.Fixed(R() % 256);
    for (int I = 0; I < 2000; ++I) {
        const unsigned Distance = 1 + R() % 40, LengthSymbol = 257 + R() % 29;
        W.Fixed(R() % 256);
        W.Fixed(LengthSymbol).Put(R(), LengthExtra[LengthSymbol - 257]);
        const unsigned D = unsigned(std::upper_bound(DistBase, DistBase + 30, Distance) - DistBase - 1);
        W.Code(D, 5).Put(Distance - DistBase[D], DistExtra[D]);
    }
    W.Fixed(256);
    const Bytes Expected = ZlibInflate(W.Out, 1 << 20);
    ASSERT_GT(Expected.size(), 100000u);
    ExpectDecodes(W.Out, Expected, "short distances");
}


TEST_F(clsPNG_Inflate, AgreesWithTheReferenceOnDamagedStreams)
{
    std::mt19937 R(2024);
    std::vector<Bytes> Corpus;
    for (int Kind = 0; Kind < 5; ++Kind)
        for (int Strategy : {Z_DEFAULT_STRATEGY, Z_FIXED, Z_RLE, Z_HUFFMAN_ONLY})
            Corpus.push_back(
                ZlibDeflate(Sample(Kind, 100 + R() % 1500, R()), Kind == 0 ? 0 : 9, Strategy, Kind == 4 ? 3 : 0));
    int Failures = 0, Errors[8] = {};
    for (int Round = 0; Round < 32000 && Failures < 5; ++Round) {
        const bool Deflate64 = R() % 4 == 0;
        const Bytes Original = R() % 2 ? RandomStream(R, Deflate64) : Corpus[R() % Corpus.size()];
        const Bytes Stream = Damage(R, Original);
        const size_t Full = RunReference(Original, 0, Deflate64).Written;
        const size_t Sizes[] = {Full, R() % (Full + 1), Full + 1 + R() % 400, R() % 3};
        for (size_t Size : Sizes) {
            const Outcome Fast = RunInflate(Stream, Size, Deflate64);
            const Outcome Ref = RunReference(Stream, Size, Deflate64);
            ++Errors[-std::clamp(Fast.Result, -7, 0)];
            const bool Same = Fast.Result == Ref.Result && Fast.Written == Ref.Written && Fast.Out == Ref.Out &&
                              Fast.Messages == Ref.Messages && Fast.Messages == (Fast.Result == clsPNG::InflateTree);
            if (!Same) {
                ++Failures;
                ADD_FAILURE() << "round " << Round << " size " << Size << " deflate64 " << Deflate64 << ": result "
                              << Fast.Result << " vs " << Ref.Result << ", written " << Fast.Written << " vs "
                              << Ref.Written << ", messages " << Fast.Messages << " vs " << Ref.Messages;
            }
        }
    }
    // Every outcome turned up often enough for the comparison to mean something.
    for (int Code = 0; Code < 8; ++Code)
        EXPECT_GE(Errors[Code], 100) << "result " << -Code;
}

}  // namespace
