#include "bench/SyntheticDeck.h"

#include <fmt/format.h>

#include <fstream>
#include <stdexcept>

namespace bench {

namespace {

// SPE1's fluid and rock tables, unchanged.
constexpr const char* kProps = R"(PROPS
PVTW
  4017.55 1.038 3.22E-6 0.318 0.0 /
ROCK
  14.7 3E-6 /
SWOF
0.12 0                     1      0
0.18 4.64876033057851E-008 1      0
0.24 0.000000186           0.997  0
0.3  4.18388429752066E-007 0.98   0
0.36 7.43801652892562E-007 0.7    0
0.42 1.16219008264463E-006 0.35   0
0.48 1.67355371900826E-006 0.2    0
0.54 2.27789256198347E-006 0.09   0
0.6  2.97520661157025E-006 0.021  0
0.66 3.7654958677686E-006  0.01   0
0.72 4.64876033057851E-006 0.001  0
0.78 0.000005625           0.0001 0
0.84 6.69421487603306E-006 0      0
0.91 8.05914256198347E-006 0      0
1    0.00001               0      0 /
SGOF
0    0     1      0
0.001 0    1      0
0.02 0     0.997  0
0.05 0.005 0.980  0
0.12 0.025 0.700  0
0.2  0.075 0.350  0
0.25 0.125 0.200  0
0.3  0.190 0.090  0
0.4  0.410 0.021  0
0.45 0.60  0.010  0
0.5  0.72  0.001  0
0.6  0.87  0.0001 0
0.7  0.94  0.000  0
0.85 0.98  0.000  0
0.88 0.984 0.000  0 /
DENSITY
  53.66 64.49 0.0533 /
PVDG
14.700 166.666 0.008000
264.70 12.0930 0.009600
514.70 6.27400 0.011200
1014.7 3.19700 0.014000
2014.7 1.61400 0.018900
2514.7 1.29400 0.020800
3014.7 1.08000 0.022800
4014.7 0.81100 0.026800
5014.7 0.64900 0.030900
9014.7 0.38600 0.047000 /
PVTO
0.0010 14.7   1.0620 1.0400 /
0.0905 264.7  1.1500 0.9750 /
0.1800 514.7  1.2070 0.9100 /
0.3710 1014.7 1.2950 0.8300 /
0.6360 2014.7 1.4350 0.6950 /
0.7750 2514.7 1.5000 0.6410 /
0.9300 3014.7 1.5650 0.5940 /
1.2700 4014.7 1.6950 0.5100
       9014.7 1.5790 0.7400 /
1.6180 5014.7 1.8270 0.4490
       9014.7 1.7370 0.6310 /
/
SOLUTION
EQUIL
  8400 4800 8450 0 8300 0 1 0 0 /
RSVD
8300 1.270
8450 1.270 /
)";

}  // namespace

bool IsSyntheticInjector(int index) {
    return index % 4 == 3;
}

std::string SyntheticWellName(int index) {
    return fmt::format("{}{:05d}", IsSyntheticInjector(index) ? 'I' : 'P', index);
}

std::string SyntheticDeck(int wells) {
    if (wells < 1) throw std::invalid_argument("a synthetic deck needs at least one well");
    const int n = wells;
    std::string deck;
    deck.reserve(static_cast<std::size_t>(n) * 200 + 8192);
    fmt::format_to(
        std::back_inserter(deck),
        "-- Synthetic deck with {0} wells: SPE1's fluids and layers on a row of {0} columns.\n"
        "RUNSPEC\nTITLE\n   SYNTHETIC {0} WELLS\nDIMENS\n   {0} 1 3 /\nEQLDIMS\n/\nTABDIMS\n/\n"
        "OIL\nGAS\nWATER\nDISGAS\nFIELD\nSTART\n   1 'JAN' 2015 /\nWELLDIMS\n   {0} 1 1 {0} /\n"
        "GRID\nDX\n   {1}*1000 /\nDY\n   {1}*1000 /\nDZ\n   {0}*20 {0}*30 {0}*50 /\nTOPS\n   {0}*8325 /\n"
        "PORO\n   {1}*0.3 /\n",
        n, 3 * n);
    for (const char* perm : {"PERMX", "PERMY", "PERMZ"})
        fmt::format_to(std::back_inserter(deck), "{}\n   {}*500 {}*50 {}*200 /\n", perm, n, n, n);
    deck += kProps;
    deck += "SCHEDULE\nWELSPECS\n";
    for (int k = 0; k < n; ++k)
        fmt::format_to(std::back_inserter(deck), "  '{}' 'G1' {} 1 {} '{}' /\n", SyntheticWellName(k), k + 1,
                       IsSyntheticInjector(k) ? 8335 : 8400, IsSyntheticInjector(k) ? "GAS" : "OIL");
    deck += "/\nCOMPDAT\n";
    for (int k = 0; k < n; ++k) {
        const int layer = IsSyntheticInjector(k) ? 1 : 3;
        fmt::format_to(std::back_inserter(deck), "  '{}' {} 1 {} {} 'OPEN' 1* 1* 0.5 /\n",
                       SyntheticWellName(k), k + 1, layer, layer);
    }
    deck += "/\nWCONPROD\n";
    for (int k = 0; k < n; ++k)
        if (!IsSyntheticInjector(k))
            fmt::format_to(std::back_inserter(deck), "  '{}' 'OPEN' 'ORAT' 200 4* 1000 /\n",
                           SyntheticWellName(k));
    deck += "/\nWCONINJE\n";
    for (int k = 0; k < n; ++k)
        if (IsSyntheticInjector(k))
            fmt::format_to(std::back_inserter(deck), "  '{}' 'GAS' 'OPEN' 'RATE' 1000 1* 9014 /\n",
                           SyntheticWellName(k));
    deck += "/\nTSTEP\n";
    for (int year = 0; year < 10; ++year) deck += "31 28 31 30 31 30 31 31 30 31 30 31\n";
    deck += "/\nEND\n";
    return deck;
}

std::string WriteSyntheticDeck(const std::string& path, int wells) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << SyntheticDeck(wells);
    if (!out.flush()) throw std::runtime_error("cannot write the synthetic deck " + path);
    return path;
}

}  // namespace bench
