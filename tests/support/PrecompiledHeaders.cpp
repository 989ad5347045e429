// The headers that all test programs share are compiled with this file.
int main() {
    return 0;
}
