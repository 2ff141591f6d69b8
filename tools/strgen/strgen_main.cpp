// nvstrgen INPUT OUTPUT: writes the GB2312 catalogue file generated from one
// UTF-8 catalogue file. Any failure leaves no output and exits with status 1.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "strgen.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: nvstrgen INPUT OUTPUT\n";
        return 1;
    }
    std::string strInPath = argv[1];
    std::string strOutPath = argv[2];
    std::ifstream in(strInPath, std::ios::binary);
    if (!in) {
        std::cerr << "nvstrgen: cannot read " << strInPath << "\n";
        return 1;
    }
    std::stringstream ss;
    ss << in.rdbuf();
    size_t ulSlash = strInPath.find_last_of('/');
    std::string strName = ulSlash == std::string::npos ? strInPath : strInPath.substr(ulSlash + 1);
    std::string strOut;
    std::string strErr;
    if (!ConvertCatalogueSource(ss.str(), strName, &strOut, &strErr)) {
        std::cerr << "nvstrgen: " << strInPath << ": " << strErr << "\n";
        std::remove(strOutPath.c_str());
        return 1;
    }
    std::string strTmp = strOutPath + ".tmp";
    std::ofstream out(strTmp, std::ios::binary | std::ios::trunc);
    out << strOut;
    out.close();
    if (!out || std::rename(strTmp.c_str(), strOutPath.c_str()) != 0) {
        std::cerr << "nvstrgen: cannot write " << strOutPath << "\n";
        std::remove(strTmp.c_str());
        return 1;
    }
    return 0;
}
