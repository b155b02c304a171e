#pragma once

#include "lint/Rule.h"

namespace lint {

/// Rules EQ5xx: configurations and their labels.
inline constexpr Rule configurationRules[] = {
    {
        "EQ501",
        Severity::warning,
        "label missing or empty",
        "writes an empty label",
        R"(The label of a configuration is the attribute tdi_config of its COEFFICIENTS_LIST.
Without it the record has a label of length 0, and nothing tells which configuration it is. The name
of the attribute is compared as written, so TDI_CONFIG does not count. Write the attribute.)",
        R"(<COEFFICIENTS_LIST>)",
    },

    {
        "EQ502",
        Severity::warning,
        "label twice in a file",
        "writes both configurations",
        R"(Both blocks are in the record, in the order of the file, with the same label. Which of
them a program takes that looks for the label is up to it. Correct the label, or remove the
configuration that is not meant.)",
        R"(<COEFFICIENTS_LIST tdi_config="ALL">...</COEFFICIENTS_LIST>
<COEFFICIENTS_LIST tdi_config="ALL">...</COEFFICIENTS_LIST>)",
    },

    {
        "EQ503",
        Severity::note,
        "label of 100 bytes or more",
        "writes it, with its length in three digits or more",
        R"(The length of a label is written with two digits, and with three from 100 on. "123" may
be a length of 123 or a length of 12 in front of a label that begins with 3: a reader can only tell
from what follows. Nothing is lost. Choose a shorter label; its bytes count in UTF-8.)",
        R"(<COEFFICIENTS_LIST tdi_config="...">   with 123 bytes between the quotes)",
    },

    {
        "EQ504",
        Severity::note,
        "configuration without detectors",
        "writes it with 0 pixels and no vectors",
        R"(The element has no COEFFICIENTS, or the converter finds none because their name differs.
The block of the record has its label and epsilon, P = 0, and no values. Remove the configuration if
it is not used, or correct the names of its children.)",
        R"(<COEFFICIENTS_LIST tdi_config="S5"></COEFFICIENTS_LIST>)",
    },

    {
        "EQ505",
        Severity::warning,
        "label that other programs read differently",
        "writes the label as it stands, tabs and line ends included",
        R"(In an attribute XML turns a tab and a line end into a space, and replaces an entity that
the document type declares by its text. The converter does neither: it keeps the characters, and the
entity stays as it is written, "&x;". So the label in the record is not the one that other programs
read from the same file. Write the label on one line, with plain characters.)",
        R"(<COEFFICIENTS_LIST tdi_config="S 1
north">)",
    },
};

}  // namespace lint
