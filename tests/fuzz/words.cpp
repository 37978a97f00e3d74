// Prints what documents are made of - tags, attributes and their words, of both forms - as a
// dictionary of libFuzzer.

#include <cstdio>
#include <set>
#include <string>

#include "engine/documents/vocabulary.h"

using namespace MCVelscore_850;

int main()
{
    std::set<std::string> words;
    for (const bool older : {false, true}) {
        for (const ElementWord* element : Vocabulary(older)) {
            words.emplace(element->tag);
            for (const AttributeWord& attribute : element->attributes) {
                words.emplace(attribute.name);
                words.insert(attribute.words.begin(), attribute.words.end());
            }
        }
    }
    for (const std::string& word : words) std::printf("\"%s\"\n", word.c_str());
}
