#include "egtb/descriptors.h"

#include <cstddef>

#include "egtb/table_sizes.h"

namespace brivok {
namespace {

/// The signatures in order of id, with nonzero flags in brackets.
constexpr std::string_view Signatures =
    "kk kpk knk kbk krk kqk kpkp knkp knkn(1) kbkp kbkn kbkb(1) krkp krkn krkb krkr(1) kqkp "
    "kqkn kqkb kqkr kqkq(1) kppk knpk knnk kbpk kbnk kbbk krpk krnk krbk krrk kqpk kqnk kqbk "
    "kqrk kqqk kppkp kppkn kppkb kppkr kppkq knpkp knpkn knpkb knpkr knpkq knnkp knnkn knnkb "
    "knnkr knnkq kbpkp kbpkn kbpkb kbpkr kbpkq kbnkp kbnkn kbnkb kbnkr kbnkq kbbkp kbbkn "
    "kbbkb kbbkr kbbkq krpkp krpkn krpkb krpkr krpkq krnkp krnkn krnkb krnkr krnkq krbkp "
    "krbkn krbkb krbkr krbkq krrkp krrkn krrkb krrkr krrkq kqpkp kqpkn kqpkb kqpkr kqpkq "
    "kqnkp kqnkn kqnkb kqnkr kqnkq kqbkp kqbkn kqbkb kqbkr kqbkq kqrkp kqrkn kqrkb kqrkr "
    "kqrkq kqqkp kqqkn kqqkb kqqkr kqqkq kpppk knppk knnpk knnnk kbppk kbnpk kbnnk kbbpk "
    "kbbnk kbbbk krppk krnpk krnnk krbpk krbnk krbbk krrpk krrnk krrbk krrrk kqppk kqnpk "
    "kqnnk kqbpk kqbnk kqbbk kqrpk kqrnk kqrbk kqrrk kqqpk kqqnk kqqbk kqqrk kqqqk knnknn(1) "
    "kbnknn kbbknn kbbkbn kbbkbb(1) krnknn(2) krnkbb(2) krbknn(2) krbkbb krrknn krrkbn "
    "krrkbb krrkrn krrkrb krrkrr(1) kqnknn kqnkbb kqnkrr(2) kqbknn kqbkbb kqbkrr kqrknn "
    "kqrkbb kqrkrr kqqknn kqqkbn kqqkbb kqqkrn kqqkrb kqqkrr kqqkqn kqqkqb kqqkqr kqqkqq(1) "
    "kbnkbn(1) krnkrn(1) krbkrb(1) kqnkqn(1) kqbkqb(1) kqrkqr(1) krnkbn(6) krbkbn(4) krbkrn "
    "kqnkbn kqnkrn(4) kqnkrb(4) kqbkbn kqbkrn(4) kqbkrb(4) kqbkqn kqrkbn kqrkrn kqrkrb "
    "kqrkqn kqrkqb kppkpp(3) knpkpp(6) knpknp(7) knnkpp(2) knnknp(6) kbpkpp(6) kbpknp(6) "
    "kbpknn(6) kbpkbp(7) kbnkpp(6) kbnknp(6) kbnkbp(6) kbbkpp(2) kbbknp(6) kbbkbp(4) "
    "krpkpp(6) krpknp(6) krpknn(6) krpkbp(6) krpkbn(6) krpkbb(6) krpkrp(5) krnkpp(6) "
    "krnknp(6) krnkbp(6) krnkrp(4) krbkpp(6) krbknp(6) krbkbp(6) krbkrp(4) krrkpp(2) "
    "krrknp(6) krrkbp(4) krrkrp(4) kqpkpp(6) kqpknp(4) kqpknn(4) kqpkbp(6) kqpkbn(4) "
    "kqpkbb(4) kqpkrp(6) kqpkrn(4) kqpkrb(6) kqpkrr(6) kqpkqp(7) kqnkpp(6) kqnknp(4) "
    "kqnkbp(4) kqnkrp(6) kqnkqp(4) kqbkpp(4) kqbknp(4) kqbkbp(4) kqbkrp(4) kqbkqp(4) "
    "kqrkpp(4) kqrknp(4) kqrkbp(4) kqrkrp(4) kqrkqp(4) kqqkpp kqqknp(4) kqqkbp(4) kqqkrp(4) "
    "kqqkqp(4) knnnkn kbnnkn kbbnkn kbbbkn krnnkn krbbkn krrnkn krrbkn krrrkn kqnnkn kqbbkn "
    "kqrrkn kqqnkn kqqbkn kqqrkn kqqqkn knnnkb kbnnkb kbbnkb kbbbkb krnnkb krbbkb krrnkb "
    "krrbkb krrrkb kqnnkb kqbbkb kqrrkb kqqnkb kqqbkb kqqrkb kqqqkb knnnkr kbnnkr kbbnkr "
    "kbbbkr krnnkr krbbkr krrnkr krrbkr krrrkr kqnnkr kqbbkr kqrrkr kqqnkr kqqbkr kqqrkr "
    "kqqqkr knnnkq kbnnkq kbbnkq kbbbkq krnnkq krbbkq krrnkq krrbkq krrrkq kqnnkq kqbbkq "
    "kqrrkq kqqnkq kqqbkq kqqrkq kqqqkq krbnkn kqbnkn kqrnkn kqrbkn krbnkb kqbnkb kqrnkb "
    "kqrbkb krbnkr kqbnkr kqrnkr kqrbkr krbnkq kqbnkq(4) kqrnkq kqrbkq kpppkp knppkp(6) "
    "knnpkp(4) knnnkp kbppkp(6) kbnpkp(6) kbnnkp(4) kbbpkp(6) kbbnkp(4) kbbbkp krppkp(4) "
    "krnpkp(6) krnnkp(4) krbpkp(6) krbnkp(4) krbbkp(4) krrpkp(6) krrnkp(4) krrbkp(4) krrrkp "
    "kqppkp(6) kqnpkp(6) kqnnkp(4) kqbpkp(6) kqbnkp(4) kqbbkp(4) kqrpkp(4) kqrnkp(4) "
    "kqrbkp(4) kqrrkp(4) kqqpkp(4) kqqnkp(4) kqqbkp(4) kqqrkp(4) kqqqkp kpppkn knppkn(4) "
    "knnpkn(4) kbppkn(4) kbnpkn(4) kbbpkn(4) krppkn(4) krnpkn(4) krbpkn(4) krrpkn(4) "
    "kqppkn(4) kqnpkn(4) kqbpkn(4) kqrpkn(4) kqqpkn(4) kpppkb knppkb(4) knnpkb(4) kbppkb(4) "
    "kbnpkb(4) kbbpkb(4) krppkb(4) krnpkb(4) krbpkb(4) krrpkb(4) kqppkb(4) kqnpkb(4) "
    "kqbpkb(4) kqrpkb(4) kqqpkb(4) kpppkr knppkr(4) knnpkr(4) kbppkr(6) kbnpkr(6) kbbpkr(6) "
    "krppkr(4) krnpkr(4) krbpkr(4) krrpkr(4) kqppkr(4) kqnpkr(4) kqbpkr(4) kqrpkr(4) "
    "kqqpkr(4) kpppkq(2) knppkq(6) knnpkq(4) kbppkq(6) kbnpkq(6) kbbpkq(6) krppkq(6) "
    "krnpkq(6) krbpkq(6) krrpkq(6) kqppkq(6) kqnpkq(6) kqbpkq(6) kqrpkq(6) kqqpkq(4)";

constexpr bool isLetter(char c) { return c >= 'a' && c <= 'z'; }

constexpr auto describeTables() {
    std::array<TablebaseDescriptor, TableCount> tables{};
    std::size_t at = 0;
    std::int32_t id = 0;
    auto size = TableSizes.begin();
    for (TablebaseDescriptor& table : tables) {
        table.id = id++;
        table.size = *size++;
        for (std::size_t i = 0; isLetter(Signatures.at(at)); ++i) table.name[i] = Signatures[at++];
        if (Signatures[at] == '(') {
            table.flags = static_cast<std::uint32_t>(Signatures.at(at + 1) - '0');
            at += 3;
        }
        ++at;
    }
    return tables;
}

}  // namespace

constexpr std::array<TablebaseDescriptor, TableCount> tablebaseDescriptors = describeTables();

}  // namespace brivok
