# PowerShell completion for mailfolder
$mailfolderWords = @{
    'check' = '--type', '-r', '--recursive', '--json'
    'compress' = '--type', '--yes', '--replace-backup', '--drop-damaged'
    'extract' = '--format', '--recursive', '--append', '--charset', '--orphans', '--no-orphans', '--deleted', '--flag-separator', '--manifest', '--unprocessed', '--since', '--until', '--from', '--subject', '--kind'
    'extract --format' = 'mbox', 'maildir', 'eml'
    'extract --charset' = 'windows-1252', 'macintosh', 'utf-8'
    'extract --flag-separator' = '!', ';', '-', '+', '='
    'info' = '--type', '-r', '--recursive', '--json'
    'list' = '--type', '--format', '--json', '--sort', '--unprocessed', '--since', '--until', '--from', '--subject', '--kind'
    'list --format' = 'text', 'json', 'jsonl', 'csv'
    'list --sort' = 'from', 'subject', 'date', 'kind', 'file'
    'prefs show' = '--json'
    'rebuild' = '--type', '--yes', '--replace-backup', '--keep-missing'
    'recover' = '--yes'
    'show' = '--raw', '--charset'
    'show --charset' = 'windows-1252', 'macintosh', 'utf-8'
    'undelete' = '--type', '--yes', '--replace-backup', '--slot'
    'user show' = '--json'
    'users export' = '--replace', '--yes', '--replace-backup', '--json'
    'users import' = '--append', '--replace', '--yes', '--replace-backup'
}
Register-ArgumentCompleter -Native -CommandName mailfolder, mailfolder.exe -ScriptBlock {
    param($word, $line, $position)
    $before = @($line.CommandElements | Select-Object -Skip 1 |
        Where-Object { $_.Extent.EndOffset -lt $position } | ForEach-Object { "$_" })
    $command = (1, 2 | ForEach-Object { $before[0..($_ - 1)] -join ' ' } |
        Where-Object { $mailfolderWords.ContainsKey($_) } | Select-Object -First 1)
    $known = if (-not $command) {
        $start = if ($before.Count) { ($before -join ' ') + ' ' } else { '' }
        $mailfolderWords.Keys | Where-Object { $_ -notmatch '--' -and $_.StartsWith($start) } |
            ForEach-Object { $_.Substring($start.Length).Split(' ')[0] }
    } elseif ($mailfolderWords.ContainsKey("$command $($before[-1])")) {
        $mailfolderWords["$command $($before[-1])"]
    } elseif ($word -like '-*') { $mailfolderWords[$command] }
    $known | Sort-Object -Unique | Where-Object { $_ -like "$word*" }
}
