#include "hash/eval_hash.h"

#include "shell/base/settings.h"

namespace brivok {

EvalHashTable evalHashTable;

void EvalHashTable::Allocate() { reallocate(settings.EHashMB, {"evaluation", "ehash"}); }

}  // namespace brivok
