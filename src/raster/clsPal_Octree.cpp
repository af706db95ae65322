// The octree of CreateOptimal: nodes in a pool, leaves that keep the first colour reaching
// them, reduction of the deepest reducible node with equal weight for its children.
#include <algorithm>

#include "basMath.h"
#include "clsDIB.h"
#include "clsPal.h"

namespace {

// One node of the octree, 56 bytes, in a pool indexed from 1 (0 stands for no node).
struct OctreeNode {
    bool Leaf;
    bool Reducible;  // put on its level's reducible list
    int32_t Red;     // sums; a leaf box lies inside one child of the root, so they stay far below 2^31
    int32_t Green;
    int32_t Blue;
    int32_t Count;  // colours summed on a leaf, children on an inner node
    std::array<int32_t, 8> Children;
    int32_t Next;  // on a reducible list or on the free list
};
static_assert(sizeof(OctreeNode) == 56);

// Which half each level's box split sends a channel value to: bit L - 1 for level L. The box
// of a channel narrows by its own value alone, so the path is the same for every colour. The
// split is at the rounded midpoint and the halves share it, so this is not the value's bits.
const std::array<uint8_t, 256>& ChannelPaths()
{
    static const std::array<uint8_t, 256> Paths = [] {
        std::array<uint8_t, 256> Made{};
        for (int32_t Value = 0; Value < 256; ++Value) {
            int32_t Low = 0, High = 255;
            for (int32_t Level = 0; Level < 8; ++Level) {
                const int32_t Mid = RoundHalfEven(Low / 2.0 + High / 2.0);
                if (Value <= Mid) {
                    High = Mid;
                } else {
                    Made[static_cast<size_t>(Value)] |= static_cast<uint8_t>(1 << Level);
                    Low = Mid;
                }
            }
        }
        return Made;
    }();
    return Paths;
}

class Octree {
public:
    explicit Octree(int32_t MaxDepth) : Depth(MaxDepth), Nodes(51, OctreeNode{}) {}

    // The first colour to reach a leaf is its value: a leaf that holds a colour takes no more.
    void AddColor(uint8_t R, uint8_t G, uint8_t B)
    {
        const auto& Paths = ChannelPaths();
        int32_t Node = 1;
        for (int32_t Level = 1;; ++Level) {
            const int32_t Bit = Level - 1;
            const int32_t Slot = ((Paths[R] >> Bit) & 1) + 2 * ((Paths[G] >> Bit) & 1) + 4 * ((Paths[B] >> Bit) & 1);
            int32_t Child = At(Node).Children[Slot];
            if (Child == 0) {
                Child = NewNode();
                At(Node).Children[Slot] = Child;
                At(Node).Count++;
                OctreeNode& Made = At(Child);
                Made.Leaf = Level == Depth;
                Made.Next = Made.Count = Made.Red = Made.Green = Made.Blue = 0;
            }
            OctreeNode& Next = At(Child);
            if (Next.Leaf) {
                if (Next.Count == 0) {
                    Leaves++;
                    Next.Count = 1;
                    Next.Red = R;
                    Next.Green = G;
                    Next.Blue = B;
                }
                return;
            }
            // The reducible lists go by the level of the parent's step.
            if (!Next.Reducible) {
                Next.Next = Reducible[Level];
                Reducible[Level] = Child;
                Next.Reducible = true;
            }
            Node = Child;
        }
    }

    // Merges the children of the deepest reducible node into it, each with equal weight.
    bool ReduceTree()
    {
        int32_t Level = Depth;
        while (Level >= 1 && Reducible[Level] == 0) --Level;
        if (Level < 1) return false;
        const int32_t Node = Reducible[Level];
        Reducible[Level] = At(Node).Next;
        int32_t Red = 0, Green = 0, Blue = 0, Total = 0;
        for (int32_t& Child : At(Node).Children) {
            if (Child == 0) continue;
            Red += At(Child).Red;
            Green += At(Child).Green;
            Blue += At(Child).Blue;
            Total += At(Child).Count;
            FreeNode(Child);
            Leaves--;
            Child = 0;
        }
        Leaves++;
        OctreeNode& Made = At(Node);
        Made.Leaf = true;
        Made.Red = Red;
        Made.Green = Green;
        Made.Blue = Blue;
        Made.Count = Total;
        return true;
    }

    int32_t LeafCount() const { return Leaves; }
    const std::vector<OctreeNode>& Pool() const { return Nodes; }

private:
    OctreeNode& At(int32_t Node) { return Nodes[static_cast<size_t>(Node)]; }

    int32_t NewNode()
    {
        Handed++;
        if (FreeHead != 0) {
            const int32_t Node = FreeHead;
            FreeHead = At(Node).Next;
            At(Node).Children.fill(0);
            return Node;
        }
        // With no freed node, every index up to the count is in use.
        if (static_cast<size_t>(Handed) >= Nodes.size())
            Nodes.resize(static_cast<size_t>(RoundHalfEven(Handed * 1.1)) + 1, OctreeNode{});
        return Handed;
    }

    void FreeNode(int32_t Node)
    {
        At(Node).Next = FreeHead;
        FreeHead = Node;
        At(Node).Leaf = At(Node).Reducible = false;
        Handed--;
    }

    int32_t Depth;
    std::vector<OctreeNode> Nodes;  // index 0 unused, node 1 the root
    int32_t Handed = 1;
    int32_t FreeHead = 0;
    int32_t Leaves = 0;
    std::array<int32_t, 9> Reducible{};  // list heads by level 1..8
};

} // namespace

void clsPal::CreateOptimal(clsDIB& Dib, int32_t MaxColors, int32_t MaxDepth)
{
    // Past 256 leaves the table would overflow; past depth 8 the boxes are single values and
    // the reducible lists end.
    MaxColors = std::clamp(MaxColors, 1, 256);
    Octree Tree(std::clamp(MaxDepth, 1, 8));
    if (Readable32(Dib)) {
        const int32_t Width = Dib.DIBWidth();
        const int32_t Height = Dib.DIBHeight();
        for (int32_t Y = 0; Y < Height; ++Y) {
            const uint8_t* Pixel = Dib.DIBBitsPtr() + static_cast<size_t>(Y) * Dib.BytesPerScanline();
            for (int32_t X = 0; X < Width; ++X, Pixel += 4) {
                Tree.AddColor(Pixel[2], Pixel[1], Pixel[0]);
                while (Tree.LeafCount() > MaxColors)
                    if (!Tree.ReduceTree()) break;
            }
            if (Height > 1) RaiseProgress(RowPercent(Y, Height));
        }
    }
    RaiseProgressEnd();
    CreateBlankPalette(256);
    // Leaves come out in pool order, not tree order.
    const std::vector<OctreeNode>& Pool = Tree.Pool();
    const auto Upper = static_cast<int32_t>(Pool.size()) - 1;
    int32_t Made = 0;
    for (int32_t I = 1; I <= Upper; ++I) {
        const OctreeNode& Node = Pool[static_cast<size_t>(I)];
        if (Node.Leaf && Node.Count > 0 && Made < 256) {
            const double Colors = Node.Count;
            SetEntry(Made++, RoundHalfEven(Node.Red / Colors), RoundHalfEven(Node.Green / Colors),
                     RoundHalfEven(Node.Blue / Colors));
        }
        if (Upper > 1) RaiseProgress(RoundHalfEven(static_cast<double>(I - 1) / (Upper - 1) * 100));
    }
    Count = Made;
    RaiseProgressEnd();
    RebuildPlatformPalette();
}
