#include "hash/pawn_hash.h"

#include "shell/base/settings.h"

namespace brivok {

PawnHashTable pawnHashTable;

void PawnHashTable::Allocate() { reallocate(settings.PHashMB, {"pawn", "phash"}); }

}  // namespace brivok
