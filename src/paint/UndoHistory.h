#pragma once
// The undo history of one paint document: whole pictures in numbered state files in the
// temporary folder, at most MaxStates of them, with no copy kept in memory. State 1 is the
// picture as it was opened until more than ten changes push it out.
//
// A state file holds a 24-byte header and the raw 32-bit rows, top row first:
//   0  4  magic "TsUS"           12  4  height (1..32767)
//   4  2  version (1)            16  4  back colour 0x00BBGGRR
//   6  2  flags (bit 0: alpha)   20  4  reserved, 0
//   8  4  width (1..32767)       24     width * height * 4 bytes, blue, green, red, alpha
// all numbers little-endian. A file whose length is not exactly that is refused.
#include <QString>
#include <cstdint>
#include <functional>

class clsDIB;

class UndoHistory {
public:
    static constexpr int MaxStates = 11;

    QString UndoBase;    // TempFolder + the document's Tag; set once before the first state
    int16_t UndoPos = 0; // state now on the canvas, 0 before the first save
    int16_t UndoTop = 0; // newest state that exists

    // Called where the history gives way to events: each round of the shift, after the save,
    // after each delete. May be empty.
    std::function<void()> Yield;
    // True while files are written, renamed or deleted (the window locks its menus, since the
    // yields let events in), false after. May be empty.
    std::function<void(bool)> Busy;

    // UndoBase + the number in three digits + ".m_Temp".
    QString StateFile(int Number) const;

    // Keeps Picture as the state after the current one and drops the redo chain. With
    // MaxStates kept, the oldest state falls off first. A picture without pixels is not kept.
    void SaveUndoState(clsDIB& Picture);

    bool CanUndo() const { return UndoPos >= 2; }
    bool CanRedo() const { return UndoTop > 1 && UndoPos < UndoTop; }
    bool CanUndoAll() const { return UndoPos >= 2; }

    // Load the state before / after the current one into Picture. False when not allowed or
    // when the file is missing or cannot be read; the position then stays.
    bool Undo(clsDIB& Picture);
    bool Redo(clsDIB& Picture);
    // Drops every state after the first and loads state 1. False when not allowed, or when
    // state 1 cannot be loaded (the later states are gone all the same).
    bool UndoAll(clsDIB& Picture);

    // Reads a state file into Picture as a top-down 32-bit surface of the file's size. A
    // missing, short or damaged file is found out before Picture is touched and gives false.
    bool LoadUndoState(const QString& Path, clsDIB& Picture);

    // On close: deletes every state file and empties the history.
    void DeleteAll();

private:
    // Writes Picture as a state file; false (and no file left) when it cannot be written.
    bool WriteState(const QString& Path, clsDIB& Picture) const;
    void YieldNow() const;
    void DeleteState(int Number) const;

    // Set while a routine that yields is running: the events let in then must not start a
    // second one on the same files. A close that arrives then is done when the first ends.
    class WorkScope;
    bool Working = false;
    bool DeletePending = false;
};
