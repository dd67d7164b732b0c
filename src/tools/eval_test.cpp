#include "tools/eval_test.h"

#include <optional>
#include <string>

#include "board/board.h"
#include "eval/evaluate.h"
#include "search/searcher.h"
#include "shell/base/console.h"
#include "tools/position_file.h"

namespace brivok {

namespace {

int scoreOf(Application& app, const std::string& line) {
    theBoard.setPositionFromFen(line);
    Print(app, "%s\n", line.c_str());
    return Evaluate(theBoard, -MateScore, MateScore);
}

}  // namespace

void RunEvalTest(Application& app) {
    const std::optional<std::string> name = Ask(app, "EPD Filename: ");
    if (!name) return;
    PositionFile file(*name);
    if (!file.isOpen()) {
        Print(app, "I couldn't open the file %s!\n", name->c_str());
        return;
    }
    std::string first;
    std::string second;
    while (file.next(first) && file.next(second)) {
        const int eval1 = scoreOf(app, first);
        const int eval2 = scoreOf(app, second);
        Print(app, "Eval1: %d - Eval2: %d - %s\n", eval1, eval2, eval1 == eval2 ? "GOOD" : "WRONG");
    }
    Print(app, "\n");
}

}  // namespace brivok
