// A host in Objective-C++.
//   g++ -std=c++20 hello.mm $(pkg-config --cflags --libs tarvik) -o hello
#import <Foundation/Foundation.h>
#import <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>

#include <iostream>

int main()
{
    tarvik::Pool pool;
    const int answer = tarvik::guarded("main", __LINE__, -1, [] { return int([[NSArray array] count]); });
    std::cout << answer << ' ' << (NSIsNull([NSNull null]) ? "null" : "") << ' ' << *tarvik::utf8(@"é")
              << '\n';
}
