// A job: what is delivered to whom. It comes from a win.ini-style file.
#pragma once

#include <string>
#include <vector>

struct Item {
    int quantity;
    std::string article; // UTF-8
    long cents;
};

struct Job {
    std::string file;
    int number;
    std::string font, paper, port;
    int copies;
    std::string name, street, city; // UTF-8
    std::vector<Item> items;

    long TotalCents() const;
};

// Reads a job; throws when the file has no items.
Job LoadJob(const std::string &file);

// Writes the number of the next note back into the job's file.
void SaveNextNumber(const Job &job);

// 23640 as "236.40", with the separator that the language wants.
std::string FormatAmount(long cents, const std::string &decimalSeparator);
